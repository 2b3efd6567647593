/**
 * @file
 * gw.h: where the gateway is.
 *
 * Both go to the data manager (datamgr, SAP 10). Unlike all other
 * managers it accepts with status 1; the calls return -4 where others return -3,
 * and never touch vor_errno.
 *
 * Message buffers kept: the request's, when none is left for the answer.
 */
#ifndef DEVICE_MGMT_GW_H
#define DEVICE_MGMT_GW_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* The first byte of the payload. */
typedef struct _vor_lat_long_set_cmd_ {
    vor_boolean set;
} VOR_LAT_LONG_SET_CMD;
VOR_LAYOUT(sizeof(VOR_LAT_LONG_SET_CMD) == 1);
VOR_LAYOUT(offsetof(VOR_LAT_LONG_SET_CMD, set) == 0);

typedef struct _vor_lat_long_set_status_ {
    vor_int32 set_status; /* 1 accepted */
} VOR_LAT_LONG_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_LAT_LONG_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_LAT_LONG_SET_STATUS, set_status) == 0);

/**
 * Set or clear the gateway's latitude.
 *
 * @param set       1 sets, every other value is sent as 0
 * @param latitude  passed to the manager unchanged
 * @return 0; -1 no endpoint; -1001 not accepted; -4 no buffer, exchange refused, or an answer that is
 *         empty or did not come in time: the change may have been made
 */
vor_int32 vor_cfg_set_gw_device_latitude_config(vor_boolean set, vor_char* latitude);

/**
 * Set or clear the gateway's longitude.
 *
 * @param set        1 sets, every other value is sent as 0
 * @param longitude  passed to the manager unchanged
 * @return 0; -1 no endpoint; -1002 not accepted; -4 no buffer, exchange refused, or an answer that is
 *         empty or did not come in time: the change may have been made
 */
vor_int32 vor_cfg_set_gw_device_longitude_config(vor_boolean set, vor_char* longitude);

VOR_DECLARATIONS_END

#endif
