/**
 * @file
 * towermon.h: the monitored objects of a tower site and the tower's identity.
 *
 * All go to the tower-monitoring manager (SAP 240), which creates, stores and
 * checks the objects; answers carry a VOR_SNMP_SET_STATUS (snmp.h). Every call
 * sets vor_errno to 0 first.
 *
 * Message buffers kept: the request's, when none is left for the answer.
 */
#ifndef DEVICE_MGMT_TOWERMON_H
#define DEVICE_MGMT_TOWERMON_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/**
 * Bind an air conditioner to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_aircon_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option);

/**
 * Bind a battery to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_battery_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option);

/**
 * Bind a fan to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_fan_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option);

/**
 * Bind a generator set to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_genset_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option);

/**
 * Bind a power measurement to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_power_measurement_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                              vor_uchar option);

/**
 * Bind a power supply to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_power_supply_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                         vor_uchar option);

/**
 * Bind a UPS to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_ups_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option);

/**
 * Bind a temperature sensor to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_temp_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                        vor_uchar option);

/**
 * Bind a humidity sensor to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_humidity_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                            vor_uchar option);

/**
 * Bind a proximity sensor to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_proximity_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                             vor_uchar option);

/**
 * Bind a fire sensor to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_fire_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                        vor_uchar option);

/**
 * Bind a door sensor to a data channel.
 *
 * @param sensor_name   the object, passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_door_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                        vor_uchar option);

/**
 * Set an air conditioner's physical id.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param id           passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_aircon_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar option);

/**
 * Set a battery's physical id.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param id           passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_battery_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar option);

/**
 * Set a fan's physical id.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param id           passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_fan_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar option);

/**
 * Set a generator set's physical id.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param id           passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_genset_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar option);

/**
 * Set a power measurement's physical id.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param id           passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_power_measurement_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar option);

/**
 * Set a power supply's physical id.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param id           passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_power_supply_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar option);

/**
 * Set a UPS's physical id.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param id           passed to the manager unchanged
 * @param option       accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_ups_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar option);

/**
 * Assign a battery to its UPS.
 *
 * @param battery_name  the object, passed to the manager unchanged
 * @param ups_name      passed to the manager unchanged
 * @param option        accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_battery_ups_name(vor_char* battery_name, vor_char* ups_name, vor_uchar option);

/**
 * Set a battery's string number.
 *
 * @param battery_name  the object, passed to the manager unchanged
 * @param string_num    passed to the manager as a signed 16-bit number
 * @param option        accepted, never sent
 */
vor_int32 vor_cfg_towermon_obj_battery_string_num(vor_char* battery_name, vor_uint16 string_num, vor_uchar option);

/**
 * Set a generator set's 9 alert levels.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param alert_1      passed to the manager unchanged
 * @param alert_2      passed to the manager unchanged
 * @param alert_3      passed to the manager unchanged
 * @param alert_4      passed to the manager unchanged
 * @param alert_5      passed to the manager unchanged
 * @param alert_6      passed to the manager unchanged
 * @param alert_7      passed to the manager unchanged
 * @param alert_8      passed to the manager unchanged
 * @param alert_9      passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_genset_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2,
                                             vor_int32 alert_3, vor_int32 alert_4, vor_int32 alert_5, vor_int32 alert_6,
                                             vor_int32 alert_7, vor_int32 alert_8, vor_int32 alert_9);

/**
 * Set a power measurement's 12 alert levels.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param alert_1      passed to the manager unchanged
 * @param alert_2      passed to the manager unchanged
 * @param alert_3      passed to the manager unchanged
 * @param alert_4      passed to the manager unchanged
 * @param alert_5      passed to the manager unchanged
 * @param alert_6      passed to the manager unchanged
 * @param alert_7      passed to the manager unchanged
 * @param alert_8      passed to the manager unchanged
 * @param alert_9      passed to the manager unchanged
 * @param alert_10     passed to the manager unchanged
 * @param alert_11     passed to the manager unchanged
 * @param alert_12     passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_power_measurement_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2,
                                                        vor_int32 alert_3, vor_int32 alert_4, vor_int32 alert_5,
                                                        vor_int32 alert_6, vor_int32 alert_7, vor_int32 alert_8,
                                                        vor_int32 alert_9, vor_int32 alert_10, vor_int32 alert_11,
                                                        vor_int32 alert_12);

/**
 * Set a power supply's 12 alert levels.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param alert_1      passed to the manager unchanged
 * @param alert_2      passed to the manager unchanged
 * @param alert_3      passed to the manager unchanged
 * @param alert_4      passed to the manager unchanged
 * @param alert_5      passed to the manager unchanged
 * @param alert_6      passed to the manager unchanged
 * @param alert_7      passed to the manager unchanged
 * @param alert_8      passed to the manager unchanged
 * @param alert_9      passed to the manager unchanged
 * @param alert_10     passed to the manager unchanged
 * @param alert_11     passed to the manager unchanged
 * @param alert_12     passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_power_supply_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2,
                                                   vor_int32 alert_3, vor_int32 alert_4, vor_int32 alert_5,
                                                   vor_int32 alert_6, vor_int32 alert_7, vor_int32 alert_8,
                                                   vor_int32 alert_9, vor_int32 alert_10, vor_int32 alert_11,
                                                   vor_int32 alert_12);

/**
 * Set a UPS's 2 alert levels.
 *
 * @param sensor_name  the object, passed to the manager unchanged
 * @param alert_1      passed to the manager unchanged
 * @param alert_2      passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_ups_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2);

/**
 * Set a temperature sensor's threshold.
 *
 * @param sensor_name      the object, passed to the manager unchanged
 * @param threshold        passed to the manager unchanged
 * @param criticality      passed to the manager unchanged
 * @param threshold_value  its low 16 bits are passed to the manager, signed: values outside -32768 to 32767 wrap
 * @param option           passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_temp_sensor_threshold_set(vor_char* sensor_name, vor_int16 threshold,
                                                         vor_int16 criticality, vor_int32 threshold_value,
                                                         vor_uchar option);

/**
 * Set a humidity sensor's threshold.
 *
 * @param sensor_name      the object, passed to the manager unchanged
 * @param threshold        passed to the manager unchanged
 * @param criticality      passed to the manager unchanged
 * @param threshold_value  its low 16 bits are passed to the manager, signed: values outside -32768 to 32767 wrap
 * @param option           passed to the manager unchanged
 */
vor_int32 vor_cfg_towermon_obj_humidity_sensor_threshold_set(vor_char* sensor_name, vor_int16 threshold,
                                                             vor_int16 criticality, vor_int32 threshold_value,
                                                             vor_uchar option);

/**
 * Set the tower's name.
 *
 * @param tower_name  passed to the manager unchanged
 * @param option      accepted, never sent
 */
vor_int32 vor_cfg_towermon_set_tower_name(vor_char* tower_name, vor_uchar option);

/**
 * Set the tower's location.
 *
 * @param tower_location  passed to the manager unchanged
 * @param option          accepted, never sent
 */
vor_int32 vor_cfg_towermon_set_tower_location(vor_char* tower_location, vor_uchar option);

/**
 * Set the tower's id.
 *
 * @param sensor_id  passed to the manager unchanged
 * @param option     accepted, never sent
 */
vor_int32 vor_cfg_towermon_set_tower_id(vor_uint32 sensor_id, vor_uchar option);

VOR_DECLARATIONS_END

#endif
