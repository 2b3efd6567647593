/**
 * @file
 * mqtt.h: MQTT services and sessions, held by the MQTT manager (mqttmgr, SAP 15).
 *
 * The topic, message, QoS, retain, keep-alive and clean-session calls name no
 * service: they set the manager's current values. vor_errno is left alone at
 * the start of a call.
 *
 * Message buffers kept: both, when the answer has no status, except by the calls for
 * credentials and server. By the two session calls: their only one, once it is sent.
 */
#ifndef DEVICE_MGMT_MQTT_H
#define DEVICE_MGMT_MQTT_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* The meta-data byte of every request that takes a config_option. */
typedef struct _mqtt_config_mode_ {
    vor_uchar mode;
} MQTT_CONFIG_MODE;
VOR_LAYOUT(sizeof(MQTT_CONFIG_MODE) == 1);
VOR_LAYOUT(offsetof(MQTT_CONFIG_MODE, mode) == 0);

typedef struct _vor_mqtt_set_status_ {
    vor_int32 set_status;
} VOR_MQTT_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_MQTT_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_MQTT_SET_STATUS, set_status) == 0);

/**
 * Set the credentials of an MQTT service.
 *
 * @param service_name   passed to the manager unchanged
 * @param protocol       passed to the manager unchanged
 * @param username       passed to the manager unchanged
 * @param password       passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_username_and_password(vor_char* service_name, vor_uchar protocol, vor_char* username,
                                                 vor_char* password, vor_uchar config_option);

/**
 * Point an MQTT service at its broker. Prints "entrd api" and, before the exchange, "going to send".
 *
 * @param service_name   passed to the manager unchanged
 * @param protocol       passed to the manager unchanged
 * @param ip_address     the broker, passed to the manager unchanged
 * @param port_number    passed to the manager as a signed 16-bit number
 * @param server_type    one byte, passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_server_config(vor_char* service_name, vor_uchar protocol, vor_char* ip_address,
                                         vor_int16 port_number, vor_uchar server_type, vor_uchar config_option);

/**
 * Start an MQTT service's session. One-way: the manager's verdict never comes back.
 *
 * @param service_name  passed to the manager unchanged
 * @param protocol      accepted, never sent
 */
vor_int32 vor_cfg_mqtt_activate_session(vor_char* service_name, vor_uchar protocol);

/**
 * End an MQTT service's session. One-way: the manager's verdict never comes back.
 *
 * @param service_name  passed to the manager unchanged
 * @param protocol      accepted, never sent
 */
vor_int32 vor_cfg_mqtt_deactivate_session(vor_char* service_name, vor_uchar protocol);

/**
 * Name the application an MQTT service serves.
 *
 * @param service_name   passed to the manager unchanged
 * @param protocol       passed to the manager unchanged
 * @param app_name       passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_application(vor_char* service_name, vor_uchar protocol, vor_char* app_name,
                                       vor_uchar config_option);

/**
 * Bind an MQTT service to an interface.
 *
 * @param service_name   passed to the manager unchanged
 * @param protocol       passed to the manager unchanged
 * @param interface_no   passed to the manager as a signed 16-bit number
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_bind_addr(vor_char* service_name, vor_uchar protocol, vor_uint16 interface_no,
                                     vor_uchar config_option);

/**
 * Set the template an MQTT service registers with.
 *
 * @param service_name   passed to the manager unchanged
 * @param protocol       passed to the manager unchanged
 * @param reg_template   passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_registration_template(vor_char* service_name, vor_uchar protocol, vor_char* reg_template,
                                                 vor_uchar config_option);

/**
 * Set the current topic.
 *
 * @param topic_name     passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_topic(vor_char* topic_name, vor_uchar config_option);

/**
 * Set the current message text.
 *
 * @param message        passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_message(vor_char* message, vor_uchar config_option);

/**
 * Set the current quality of service.
 *
 * @param qos            passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_qos_level(vor_uchar qos, vor_uchar config_option);

/**
 * Set the current retain flag.
 *
 * @param retain_flag    passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_retain_flag(vor_uchar retain_flag, vor_uchar config_option);

/**
 * Set the current keep-alive interval.
 *
 * @param interval       in the manager's unit, passed to the manager unchanged
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_keep_alive_interval(vor_uint32 interval, vor_uchar config_option);

/**
 * Set the current clean-session flag.
 *
 * @param clean_session_flag  its low 16 bits are passed to the manager
 * @param config_option       passed to the manager unchanged
 */
vor_int32 vor_cfg_set_mqtt_clean_session_flag(vor_uint32 clean_session_flag, vor_uchar config_option);

VOR_DECLARATIONS_END

#endif
