/**
 * @file
 * syslog.h: the remote syslog target, held by the platform manager (platmgr, SAP 2).
 *
 * Message buffers kept: the request's, when none is left for the answer; both, when
 * the request's has no room or the answer has no status; the answer's, when the
 * exchange is refused.
 */
#ifndef DEVICE_MGMT_SYSLOG_H
#define DEVICE_MGMT_SYSLOG_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _syslog_info_ {
    vor_uchar mode;
    vor_uint32 ip_address; /* network byte order */
    vor_uint16 port_number;
    vor_uchar protocol;
} SYSLOG_INFO;
VOR_LAYOUT(sizeof(SYSLOG_INFO) == 12);
VOR_LAYOUT(offsetof(SYSLOG_INFO, mode) == 0);
VOR_LAYOUT(offsetof(SYSLOG_INFO, ip_address) == 4);
VOR_LAYOUT(offsetof(SYSLOG_INFO, port_number) == 8);
VOR_LAYOUT(offsetof(SYSLOG_INFO, protocol) == 10);

typedef struct _vor_rsyslog_configure_status_ {
    vor_int32 set_status;
} RSYSLOG_CONFIGURE_STATUS;
VOR_LAYOUT(sizeof(RSYSLOG_CONFIGURE_STATUS) == 4);
VOR_LAYOUT(offsetof(RSYSLOG_CONFIGURE_STATUS, set_status) == 0);

/**
 * Set the syslog server. Sets vor_errno to 0 first.
 *
 * @param mode         passed to the manager unchanged
 * @param ip_address   dotted quad; text that does not parse is sent as 0.0.0.0
 * @param port_number  the server's port
 * @param protocol     passed to the manager unchanged
 */
vor_int32 vor_cfg_set_sysloginfo(vor_uchar mode, vor_char* ip_address, vor_uint16 port_number, vor_uchar protocol);

/**
 * Do nothing. Kept so that programs link: no message is sent and nothing is written.
 *
 * @param ip_address   left untouched
 * @param port_number  left untouched
 * @param protocol     left untouched
 * @return 0
 */
vor_int32 vor_cfg_get_sysloginfo(vor_char* ip_address, vor_uint16* port_number, vor_uchar* protocol);

VOR_DECLARATIONS_END

#endif
