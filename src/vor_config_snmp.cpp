// The SNMP agent (snmpmgr).
#include <device_mgmt/snmp.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame snmp = sap(21) | clears_errno | lone_request_dropped;
constexpr Frame snmp_notice = snmp | two_buffer_send;
constexpr MessageId v2_setting = 0x15017;
constexpr MessageId v3_setting = 0x15001;

} // namespace

vor_int32 vor_cfg_set_snmp_v2_server_community_name(vor_char* name, vor_uchar mode, vor_uchar option)
{
    return request<snmp_notice, v2_setting>(str<1>(name), int16<2>(mode), int16<4>(option));
}

vor_int32 vor_cfg_set_snmp_v2_trap_server(vor_char* ip_addr, vor_char* community_name, vor_uchar option)
{
    return request<snmp_notice, v2_setting>(str<3>(ip_addr), str<5>(community_name), int16<4>(option));
}

// The tag of the credential is the caller's choice, so the chain is built here.
vor_int32 vor_cfg_set_snmp_server_v3_credentials(vor_char* input_string, vor_uchar mode, vor_uchar option)
{
    constexpr vor_uint16 before_first_group = 32; // mode 1: 33, 34, 35
    constexpr vor_uint16 before_other_group = 35; // mode 0: 36, 37, 38
    Exchange exchange;
    const vor_int32 code = exchange.take_buffers<snmp, v3_setting>();
    if (code != ok) {
        return code;
    }
    exchange.payload = payload_of(exchange.request);
    TLV_CHAIN chain;
    vor_tlv_chain_init(&chain);
    if (mode <= 1 && option >= 1 && option <= 3) {
        const vor_uint16 group = mode == 1 ? before_first_group : before_other_group;
        vor_tlv_chain_add_str(&chain, static_cast<vor_uint16>(group + option), input_string);
    }
    vor_tlv_chain_add_vor_int16(&chain, 4, option);
    exchange.serialize(chain);
    return exchange.send_and_finish();
}

vor_int32 vor_cfg_set_snmp_server_enable(vor_uchar is_enabled)
{
    return request<snmp_notice, v3_setting>(int16<39>(is_enabled));
}

vor_int32 vor_cfg_set_snmp_server_v3_user_access(vor_char* input_string, vor_uchar access)
{
    return request<snmp, v3_setting>(str<40>(input_string), int16<2>(access));
}

vor_int32 vor_cfg_set_snmp_server_v3_engine_id(vor_char* input_string)
{
    return request<snmp, v3_setting>(str<41>(input_string));
}
