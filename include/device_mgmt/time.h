/**
 * @file
 * time.h: the gateway's clock, held by the NTP manager (ntpmgr, SAP 22).
 *
 * Both calls set vor_errno to 0 first. Message buffers kept: the request's, when none is left for the answer.
 */
#ifndef DEVICE_MGMT_TIME_H
#define DEVICE_MGMT_TIME_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

struct _vor_ntpmgr_set_status_ {
    vor_int32 set_status;
};
VOR_LAYOUT(sizeof(struct _vor_ntpmgr_set_status_) == 4);
VOR_LAYOUT(offsetof(struct _vor_ntpmgr_set_status_, set_status) == 0);

/**
 * Name the NTP server.
 *
 * @param server_name  host name or address, passed to the manager unchanged
 * @param port_no      passed to the manager as all 32 bits
 * @param option       its low 16 bits are passed to the manager
 */
vor_int32 vor_set_ntp_server(vor_char* server_name, vor_uint32 port_no, vor_int32 option);

/**
 * Select the time zone by its index.
 *
 * @param time_zone_index  an index into the manager's table
 * @param option           its low 16 bits are passed to the manager
 */
vor_int32 vor_set_timezone_string(vor_uint32 time_zone_index, vor_int32 option);

VOR_DECLARATIONS_END

#endif
