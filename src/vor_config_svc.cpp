// REST and protocol services, service chains, transport applications.
#include <device_mgmt/svc.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame rest = sap(3) | one_way | null_payload_keeps;
constexpr MessageId rest_setting = 0x3002; // the tags present say which
constexpr Frame protocol_service = sap(10) | one_way | null_payload_keeps;
constexpr Frame transport = sap(0) | one_way | null_payload_keeps; // the SAP is the caller's
constexpr MessageId transport_application = 0x0fffe029;
constexpr Frame chain = sap(9) | clears_errno | lone_request_dropped | option_byte | null_payload_drops | id_low_half;
constexpr MessageId service_chain = 0x9004;

} // namespace

vor_int32 vor_cfg_rest_set_bind_addr(vor_char* service_name, vor_char* bind_iface)
{
    return request<rest, rest_setting>(str<1>(service_name), str<6>(bind_iface));
}

vor_int32 vor_cfg_rest_set_app(vor_char* service_name, vor_char* app_name)
{
    return request<rest, rest_setting>(str<1>(service_name), str<4>(app_name));
}

vor_int32 vor_cfg_set_rest_config(vor_char* service_name, vor_char* ip_address, vor_int16 port_number,
                                  vor_int16 security_option)
{
    return request<rest, rest_setting>(str<1>(service_name), str<2>(ip_address), int16<3>(port_number),
                                       int16<5>(security_option));
}

vor_int32 vor_cfg_set_protocol_svc(vor_char* service_name, vor_int16 protocol)
{
    return request<protocol_service, 0xa003>(str<1>(service_name), int16<2>(protocol));
}

// The interface ends in a narrow type before the dots; gcc and clang both find
// the arguments after it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"

vor_int32 vor_cfg_set_service_chain(vor_uchar mode, vor_char* chain_name, vor_uchar elm_count, ...)
{
    Exchange exchange;
    Texts members{};
    members.count = elm_count;
    va_start(members.list, elm_count);
    vor_int32 code = exchange.prepare<chain, service_chain>(option(mode), str<1>(chain_name), strings<2>(members));
    va_end(members.list);
    if (code != ok) {
        return code;
    }
    code = exchange.send_and_receive();
    if (code != ok) {
        return code;
    }
    if (!exchange.answer_matches()) {
        return -1; // a foreign answer: both buffers are kept
    }
    return exchange.finish();
}

#pragma GCC diagnostic pop

vor_int32 vor_cfg_tp_set_app(vor_char* service_name, vor_char* app_name, vor_int16 app_sap_id)
{
    Exchange exchange;
    const vor_int32 code = exchange.prepare<transport, transport_application>(str<1>(service_name), str<2>(app_name));
    if (code != ok) {
        return code;
    }
    exchange.frame.sap = static_cast<vor_uint16>(app_sap_id);
    return exchange.send();
}
