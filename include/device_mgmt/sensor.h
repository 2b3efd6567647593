/**
 * @file
 * sensor.h: sensor flows and templates, held by the sensor manager (sensormgr, SAP 14).
 *
 * Each call sets or clears one association, as its set_flag says. Every call
 * sets vor_errno to 0 first.
 *
 * Message buffers kept: the answer's, when it has no status.
 */
#ifndef DEVICE_MGMT_SENSOR_H
#define DEVICE_MGMT_SENSOR_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_sensor_set_status_ {
    vor_int32 set_status;
} VOR_SENSOR_SET_STAT;
VOR_LAYOUT(sizeof(VOR_SENSOR_SET_STAT) == 4);
VOR_LAYOUT(offsetof(VOR_SENSOR_SET_STAT, set_status) == 0);

/**
 * Set the template that formats a flow's data.
 *
 * @param sensor_name    passed to the manager unchanged
 * @param flow_name      passed to the manager unchanged
 * @param template_file  passed to the manager unchanged
 * @param set_flag       sets or clears, as the manager codes it
 */
vor_int32 vor_cfg_set_flow_data_template(vor_char* sensor_name, vor_char* flow_name, vor_char* template_file,
                                         vor_boolean set_flag);

/**
 * Set the template that formats a flow's registration.
 *
 * @param sensor_name    passed to the manager unchanged
 * @param flow_name      passed to the manager unchanged
 * @param template_file  passed to the manager unchanged
 * @param set_flag       sets or clears, as the manager codes it
 */
vor_int32 vor_cfg_set_flow_registration_template(vor_char* sensor_name, vor_char* flow_name, vor_char* template_file,
                                                 vor_boolean set_flag);

/**
 * Set the processing chain a flow passes through.
 *
 * @param sensor_name  passed to the manager unchanged
 * @param flow_name    passed to the manager unchanged
 * @param chain_name   passed to the manager unchanged
 * @param set_flag     sets or clears, as the manager codes it
 */
vor_int32 vor_cfg_set_sensor_flow_chain(vor_char* sensor_name, vor_char* flow_name, vor_char* chain_name,
                                        vor_boolean set_flag);

/**
 * Set the data channel a sensor reads.
 *
 * @param sensor_name   passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param set_flag      sets or clears, as the manager codes it
 */
vor_int32 vor_cfg_set_sensor_channel(vor_char* sensor_name, vor_char* channel_name, vor_boolean set_flag);

VOR_DECLARATIONS_END

#endif
