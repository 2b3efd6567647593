// The remote syslog target (platmgr).
#include <device_mgmt/syslog.h>

#include "frame.hpp"

namespace {

constexpr Frame rsyslog =
    sap(2) | clears_errno | refused_keeps_response | id_low_half | empty_answer_keeps; // lone request kept
constexpr vor_uint32 set_target = 0x2012;

} // namespace

vor_int32 vor_cfg_set_sysloginfo(vor_uchar mode, vor_char* ip_address, vor_uint16 port_number, vor_uchar protocol)
{
    Call call;
    const vor_int32 code = take(call, rsyslog);
    if (code != ok) {
        return code;
    }
    const vor_ip_address address = address_in(ip_address); // read before its place is asked for
    auto* const info = reinterpret_cast<SYSLOG_INFO*>(payload_of(call.request));
    if (info == nullptr) {
        return no_status; // both buffers stay taken
    }
    info->mode = mode;
    info->ip_address = address;
    info->port_number = port_number;
    info->protocol = protocol;
    call.length = sizeof *info;
    return conclude(call, rsyslog, set_target);
}

vor_int32 vor_cfg_get_sysloginfo(vor_char* /*ip_address*/, vor_uint16* /*port_number*/, vor_uchar* /*protocol*/)
{
    return 0;
}
