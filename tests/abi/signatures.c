/*
 * Every call declared a second time, in C's own types: a parameter that changes
 * its type or its sign, or a type that changes its width, does not compile. A
 * line changes only together with the major version.
 */
#include <device_mgmt.h>

#define CALL(returned, name, parameters) extern returned name parameters

extern int32_t vor_errno;

/* adc.h */
CALL(int32_t, vor_cfg_set_adc_config_polling, (int16_t, int16_t, int16_t, uint32_t, int16_t));
CALL(int32_t, vor_cfg_set_adc_config_interrupt, (int16_t, int16_t, int16_t, uint8_t, int16_t));
CALL(ADC_PIN_STATS*, vor_cfg_get_adc_port_stats, (int16_t, int16_t));
CALL(int32_t, vor_cfg_set_adc_channel_name, (uint8_t, uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_reset_adc_config_mode, (int16_t, int16_t, int16_t, int16_t));

/* can.h */
CALL(int32_t, vor_cfg_set_can_channel_name, (uint32_t, char*, uint8_t));
CALL(int32_t, vor_cfg_set_can_baudrate, (uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_set_can_id, (int16_t, uint32_t, int16_t));
CALL(int32_t, vor_cfg_set_can_peer_id, (int16_t, uint32_t, int16_t));
CALL(int32_t, vor_cfg_set_can_msg_id, (uint32_t, uint32_t, int16_t));

/* common.h */
CALL(int16_t, vor_cfg_create_ipc_endpoint, (uint16_t));
CALL(int32_t, vor_cfg_remove_ipc_endpoint, (void));
CALL(VOR_IPC_HANDLE*, vor_cfg_get_ipc_endpoint, (void));
CALL(void, vor_cfg_set_ipc_endpoint, (VOR_IPC_HANDLE*));
CALL(int16_t, vor_cfg_create_sock_endpoint, (void));
CALL(int32_t, vor_cfg_remove_sock_endpoint, (void));
CALL(VOR_UNIX_SOCKET*, vor_cfg_get_sock_endpoint, (void));
CALL(int16_t, vor_cfg_set_user_flag, (uint8_t));
CALL(uint8_t, vor_cfg_get_user_flag, (void));
CALL(int32_t, vor_convert_mac_address_from_str_to_byte, (char*, uint8_t*));
CALL(int32_t, ip_aton, (char*, uint32_t*));
CALL(int16_t, vor_system_restart, (int16_t));
CALL(void, vor_restart_timer, (void));

/* debug.h */
CALL(int32_t, vor_cfg_set_debug_info, (uint8_t, char*, char*));
CALL(int32_t, vor_cfg_set_log_file, (int32_t, char*, char*, char*, char*, char*, int32_t));

/* devicename.h */
CALL(int32_t, vor_cfg_set_device_name, (char*, uint8_t));
CALL(int32_t, vor_cfg_set_device_location, (char*, uint8_t));
CALL(int32_t, vor_cfg_set_device_id, (uint32_t, uint8_t));

/* env.h */
CALL(int32_t, vor_cfg_get_system_temperature, (int16_t*));

/* gpio.h */
CALL(int32_t, vor_cfg_set_gpio_direction, (int16_t, int16_t, int16_t));
CALL(int32_t, vor_cfg_set_gpio_config_interrupt, (int16_t, int16_t, uint8_t, int16_t));
CALL(int32_t, vor_cfg_set_gpio_config_polling, (int16_t, int16_t, uint32_t, int16_t));
CALL(int32_t, vor_cfg_set_gpio_channel_name, (uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_set_gpio_value, (int16_t, int16_t));
CALL(GPIO_PIN_STATS*, vor_cfg_get_gpio_port_stats, (int16_t));

/* gsm.h */
CALL(int32_t, vor_cfg_gsm_set_access_point_name, (uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_gsm_set_username, (uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_gsm_set_password, (uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_gsm_activate, (uint8_t));

/* gw.h */
CALL(int32_t, vor_cfg_set_gw_device_latitude_config, (uint8_t, char*));
CALL(int32_t, vor_cfg_set_gw_device_longitude_config, (uint8_t, char*));

/* hostname.h */
CALL(int32_t, vor_cfg_set_plat_hostname, (char*));

/* ip.h */
CALL(int32_t, vor_cfg_set_ip_address, (uint8_t, char*, char*, uint8_t));
CALL(int32_t, vor_cfg_set_ipv6_address, (uint16_t, char*, char));
CALL(int32_t, vor_cfg_set_dhcp, (uint8_t, char));
CALL(int32_t, vor_cfg_set_ipv6_dhcp, (uint8_t, char));
CALL(int32_t, vor_cfg_set_interface_security_params, (uint8_t, char*, char*, uint16_t, uint8_t));
CALL(int32_t, vor_cfg_set_access_point_params, (uint16_t, char*, char*, uint16_t, uint16_t, char));
CALL(int32_t, vor_cfg_get_ip_address, (uint8_t, char*, char*));
CALL(int32_t, vor_cfg_get_interface_security_params, (uint8_t, char*, char*, uint16_t*));
CALL(int32_t, vor_cfg_set_dhcp_server_address_range, (char*, char*, char*, int32_t, int16_t));
CALL(int32_t, vor_cfg_get_dhcp_server_address_range, (char*, char*, char*));
CALL(int32_t, vor_cfg_set_dhcp_server_dns, (char*, int16_t, char, ...));
CALL(int32_t, vor_cfg_set_dhcp_server_pool_name, (char*, char));
CALL(int32_t, vor_cfg_set_dhcp_server_interface, (char*, uint16_t, char));
CALL(int32_t, vor_cfg_set_dhcp_server_subnet, (char*, char*, char));
CALL(int32_t, vor_cfg_set_dhcp_server_def_router, (char*, char*, char));
CALL(int32_t, vor_cfg_set_dhcp_server_domain_name, (char*, char*, char));
CALL(int32_t, vor_cfg_set_dhcp_server_lease_time, (char*, int32_t, char));
CALL(int32_t, vor_cfg_set_dhcp_server_dns_client, (char*, char*, int16_t, ...));
CALL(int32_t, vor_cfg_set_default_gateway, (char*, char*, char));
CALL(int32_t, vor_cfg_show_route_status, (char*));
CALL(int32_t, vor_cfg_enable_ip_routing, (char*));
CALL(int32_t, vor_cfg_set_via_route, (char*, char*));
CALL(int32_t, vor_cfg_set_static_route, (char*, char*));
CALL(int32_t, vor_cfg_remove_ip_route, (char*));

/* konfd.h */
CALL(VOR_CFG_PROTO*, vor_cfg_proto_init, (void));
CALL(int32_t, vor_cfg_proto_set_op, (VOR_CFG_PROTO*, uint8_t));
CALL(int32_t, vor_cfg_proto_set_pattern_string, (VOR_CFG_PROTO*, uint8_t, char*, char*));
CALL(int32_t, vor_cfg_proto_set_line_string, (VOR_CFG_PROTO*, char*, char*));
CALL(int32_t, vor_cfg_proto_set_priority_string, (VOR_CFG_PROTO*, char*));
CALL(int32_t, vor_cfg_proto_append_path_elm, (VOR_CFG_PROTO*, char*, char*));
CALL(int32_t, vor_cfg_proto_cleanup, (VOR_CFG_PROTO*));
CALL(char*, vor_cfg_proto_get_command, (VOR_CFG_PROTO*, int32_t*));
CALL(int32_t, vor_konfd_bi_dir_comm, (VOR_CFG_PROTO*));
CALL(int32_t, vor_cfg_set_wifi_ssid_password, (char*, char*));
CALL(int32_t, vor_cfg_set_interface_ip, (char*, char*));

/* lora.h */
CALL(int32_t, tarn_cfg_lora_set_channel, (int16_t, char*, uint8_t));

/* modbus.h */
CALL(int32_t, vor_cfg_set_modbus_channel_name, (uint8_t, char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_baudrate, (uint8_t, char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_parity, (uint8_t, char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_data_bit, (uint8_t, uint32_t, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_stop_bit, (uint8_t, uint8_t, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_slave_id, (uint8_t, uint8_t, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_reg_grp_name, (uint8_t, char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_config_polling, (char*, uint32_t, uint8_t, uint8_t, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_query_config_polling, (char*, char*, uint8_t, uint8_t, uint8_t, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_reset_modbus_config_mode, (char*, uint32_t, uint8_t, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_reg_config, (char*, uint32_t, uint8_t, uint32_t, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_query_config, (char*, char*, uint8_t, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_tcp_service_protocol, (char*, uint8_t, int16_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_tcp_slave_id, (char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_tcp_slave_ip, (char*, char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_tcp_slave_port, (char*, char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_tcp_reg_grp_name, (char*, char*, uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_modbus_tcp_channel_name, (char*, char*, uint32_t, uint8_t));

/* mqtt.h */
CALL(int32_t, vor_cfg_set_mqtt_username_and_password, (char*, uint8_t, char*, char*, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_server_config, (char*, uint8_t, char*, int16_t, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_mqtt_activate_session, (char*, uint8_t));
CALL(int32_t, vor_cfg_mqtt_deactivate_session, (char*, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_application, (char*, uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_bind_addr, (char*, uint8_t, uint16_t, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_registration_template, (char*, uint8_t, char*, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_topic, (char*, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_message, (char*, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_qos_level, (uint8_t, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_retain_flag, (uint8_t, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_keep_alive_interval, (uint32_t, uint8_t));
CALL(int32_t, vor_cfg_set_mqtt_clean_session_flag, (uint32_t, uint8_t));

/* pcu.h */
CALL(int32_t, vor_cfg_set_pcu_config_module, (char*));
CALL(int32_t, vor_cfg_set_pcu_config_enable, (uint8_t));

/* sensor.h */
CALL(int32_t, vor_cfg_set_flow_data_template, (char*, char*, char*, uint8_t));
CALL(int32_t, vor_cfg_set_flow_registration_template, (char*, char*, char*, uint8_t));
CALL(int32_t, vor_cfg_set_sensor_flow_chain, (char*, char*, char*, uint8_t));
CALL(int32_t, vor_cfg_set_sensor_channel, (char*, char*, uint8_t));

/* serial.h */
CALL(int32_t, vor_cfg_set_serial_polling, (int16_t, uint32_t, int16_t));
CALL(int32_t, vor_cfg_set_serial_databits, (int16_t, int16_t));
CALL(int32_t, vor_cfg_set_serial_stopbits, (int16_t, int16_t));
CALL(int32_t, vor_cfg_set_serial_speed, (int16_t, int32_t));
CALL(int32_t, vor_cfg_set_serial_flowcontrol, (int16_t, int16_t));
CALL(int32_t, vor_cfg_set_serial_parity, (int16_t, int16_t));
CALL(int32_t, vor_cfg_serial_set_channel, (int16_t, char*, uint8_t));

/* snmp.h */
CALL(int32_t, vor_cfg_set_snmp_v2_server_community_name, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_set_snmp_v2_trap_server, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_set_snmp_server_v3_credentials, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_set_snmp_server_enable, (uint8_t));
CALL(int32_t, vor_cfg_set_snmp_server_v3_user_access, (char*, uint8_t));
CALL(int32_t, vor_cfg_set_snmp_server_v3_engine_id, (char*));

/* sub1g.h */
CALL(int32_t, vor_cfg_set_sub1g_frequency, (int16_t, int16_t));
CALL(int32_t, vor_cfg_sub1g_set_channel, (int16_t, char*, uint8_t, char*));
CALL(int32_t, vor_cfg_get_reg_values, (SUB1G_CONFIG_REG**));
CALL(int32_t, vor_cfg_set_sub1g_power, (int16_t, int16_t));

/* svc.h */
CALL(int32_t, vor_cfg_rest_set_bind_addr, (char*, char*));
CALL(int32_t, vor_cfg_rest_set_app, (char*, char*));
CALL(int32_t, vor_cfg_set_rest_config, (char*, char*, int16_t, int16_t));
CALL(int32_t, vor_cfg_set_protocol_svc, (char*, int16_t));
CALL(int32_t, vor_cfg_set_service_chain, (uint8_t, char*, uint8_t, ...));
CALL(int32_t, vor_cfg_tp_set_app, (char*, char*, int16_t));

/* syslog.h */
CALL(int32_t, vor_cfg_set_sysloginfo, (uint8_t, char*, uint16_t, uint8_t));
CALL(int32_t, vor_cfg_get_sysloginfo, (char*, uint16_t*, uint8_t*));

/* time.h */
CALL(int32_t, vor_set_ntp_server, (char*, uint32_t, int32_t));
CALL(int32_t, vor_set_timezone_string, (uint32_t, int32_t));

/* towermon.h */
CALL(int32_t, vor_cfg_towermon_obj_aircon_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_battery_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_fan_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_genset_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_power_measurement_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_power_supply_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_ups_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_temp_sensor_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_humidity_sensor_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_proximity_sensor_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_fire_sensor_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_door_sensor_channel_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_aircon_physical_id, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_battery_physical_id, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_fan_physical_id, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_genset_physical_id, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_power_measurement_physical_id, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_power_supply_physical_id, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_ups_physical_id, (char*, uint8_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_battery_ups_name, (char*, char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_battery_string_num, (char*, uint16_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_genset_alerts,
     (char*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t));
CALL(int32_t, vor_cfg_towermon_obj_power_measurement_alerts,
     (char*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
      int32_t));
CALL(int32_t, vor_cfg_towermon_obj_power_supply_alerts,
     (char*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
      int32_t));
CALL(int32_t, vor_cfg_towermon_obj_ups_alerts, (char*, int32_t, int32_t));
CALL(int32_t, vor_cfg_towermon_obj_temp_sensor_threshold_set, (char*, int16_t, int16_t, int32_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_obj_humidity_sensor_threshold_set, (char*, int16_t, int16_t, int32_t, uint8_t));
CALL(int32_t, vor_cfg_towermon_set_tower_name, (char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_set_tower_location, (char*, uint8_t));
CALL(int32_t, vor_cfg_towermon_set_tower_id, (uint32_t, uint8_t));

/* wifimonitor.h */
CALL(int32_t, set_wifi_monitor_channel_name, (char*, uint8_t));
