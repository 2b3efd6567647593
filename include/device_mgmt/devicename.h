/**
 * @file
 * devicename.h: the gateway device's identity.
 *
 * All go to the tower-monitoring manager (SAP 240); answers carry a
 * VOR_SNMP_SET_STATUS (snmp.h). Every call sets vor_errno to 0 first.
 *
 * Message buffers kept: the request's, when none is left for the answer.
 */
#ifndef DEVICE_MGMT_DEVICENAME_H
#define DEVICE_MGMT_DEVICENAME_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/**
 * Set the gateway device's name.
 *
 * @param device_name  passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_set_device_name(vor_char* device_name, vor_uchar option);

/**
 * Set the gateway device's location.
 *
 * @param device_location  passed to the manager unchanged
 * @param option           accepted, never sent
 */
vor_int32 vor_cfg_set_device_location(vor_char* device_location, vor_uchar option);

/**
 * Set the gateway device's id.
 *
 * @param sensor_id  passed to the manager unchanged
 * @param option     accepted, never sent
 */
vor_int32 vor_cfg_set_device_id(vor_uint32 sensor_id, vor_uchar option);

VOR_DECLARATIONS_END

#endif
