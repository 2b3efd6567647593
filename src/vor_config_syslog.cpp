// The remote syslog target (platmgr).
#include <device_mgmt/syslog.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame rsyslog =
    sap(2) | clears_errno | refused_keeps_response | id_low_half | empty_answer_keeps; // lone request kept
constexpr MessageId set_target = 0x2012;

} // namespace

vor_int32 vor_cfg_set_sysloginfo(vor_uchar mode, vor_char* ip_address, vor_uint16 port_number, vor_uchar protocol)
{
    Exchange exchange;
    const vor_int32 code = exchange.take_buffers<rsyslog, set_target>();
    if (code != ok) {
        return code;
    }
    const vor_ip_address address = address_in(ip_address); // read before its place is reserved
    auto* const info = reinterpret_cast<SYSLOG_INFO*>(payload_of(exchange.request));
    if (info == nullptr) {
        return no_status; // both buffers are kept
    }
    info->mode = mode;
    info->ip_address = address;
    info->port_number = port_number;
    info->protocol = protocol;
    exchange.length = sizeof *info;
    return exchange.send_and_finish();
}

vor_int32 vor_cfg_get_sysloginfo(vor_char* /*ip_address*/, vor_uint16* /*port_number*/, vor_uchar* /*protocol*/)
{
    return 0;
}
