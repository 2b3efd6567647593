// The remote syslog target (platmgr).
#include <device_mgmt/syslog.h>

#include "frame.hpp"

namespace {

constexpr Frame rsyslog = sap(2) | clears_errno | null_payload_keeps | refused_keeps_response | id_low_half |
                          empty_answer_keeps; // lone request kept

} // namespace

vor_int32 vor_cfg_set_sysloginfo(vor_uchar mode, vor_char* ip_address, vor_uint16 port_number, vor_uchar protocol)
{
    return request<rsyslog, 0x2012, sizeof(SYSLOG_INFO)>(
        FIELD(SYSLOG_INFO, mode)(mode), ADDRESS_FIELD(SYSLOG_INFO, ip_address)(ip_address),
        FIELD(SYSLOG_INFO, port_number)(port_number), FIELD(SYSLOG_INFO, protocol)(protocol));
}

vor_int32 vor_cfg_get_sysloginfo(vor_char* /*ip_address*/, vor_uint16* /*port_number*/, vor_uchar* /*protocol*/)
{
    return 0;
}
