/* The umbrella header as a C11 front end sees it: the calls' exact types, and calls made through them. */
#include <device_mgmt.h>

const char* header_c11_calls(void);

typedef vor_char* text;

static vor_int16 (*const restart)(vor_int16) = vor_system_restart;
static vor_int32 (*const set_ip_address)(vor_uchar, text, text, vor_uchar) = vor_cfg_set_ip_address;
static vor_int32 (*const set_dhcp_server_dns)(text, vor_int16, vor_char, ...) = vor_cfg_set_dhcp_server_dns;
static vor_int32 (*const set_debug_info)(vor_boolean, text, text) = vor_cfg_set_debug_info;
static vor_int32 (*const set_log_file)(vor_int32, text, text, text, text, text, vor_int32) = vor_cfg_set_log_file;
static vor_int32 (*const set_latitude)(vor_boolean, text) = vor_cfg_set_gw_device_latitude_config;
static vor_int32 (*const set_sysloginfo)(vor_uchar, text, vor_uint16, vor_uchar) = vor_cfg_set_sysloginfo;
static vor_int32 (*const set_hostname)(text) = vor_cfg_set_plat_hostname;
static vor_int32 (*const get_temperature)(vor_int16*) = vor_cfg_get_system_temperature;
static vor_int32 (*const set_service_chain)(vor_uchar, text, vor_uchar, ...) = vor_cfg_set_service_chain;
static vor_int32 (*const set_keep_alive)(vor_uint32, vor_uchar) = vor_cfg_set_mqtt_keep_alive_interval;
static vor_int32 (*const set_credentials)(text, vor_uchar, vor_uchar) = vor_cfg_set_snmp_server_v3_credentials;
static vor_int32 (*const set_ntp_server)(text, vor_uint32, vor_int32) = vor_set_ntp_server;
static vor_int32 (*const activate_gsm)(vor_uchar) = vor_cfg_gsm_activate;
static GPIO_PIN_STATS* (*const get_gpio_statistics)(vor_int16) = vor_cfg_get_gpio_port_stats;
static ADC_PIN_STATS* (*const get_adc_statistics)(vor_int16, vor_int16) = vor_cfg_get_adc_port_stats;
static vor_int32 (*const set_serial_polling)(vor_int16, vor_uint32, vor_int16) = vor_cfg_set_serial_polling;
static vor_int32 (*const set_sensor_channel)(text, text, vor_boolean) = vor_cfg_set_sensor_channel;
static vor_int32 (*const get_registers)(SUB1G_CONFIG_REG**) = vor_cfg_get_reg_values;
static vor_int32 (*const set_can_id)(vor_int16, vor_uint32, vor_int16) = vor_cfg_set_can_id;
static tarn_int32 (*const set_lora_channel)(tarn_int16, tarn_char*, tarn_boolean) = tarn_cfg_lora_set_channel;
static vor_int32 (*const enable_pcu)(vor_uchar) = vor_cfg_set_pcu_config_enable;
static vor_int32 (*const name_wifi_monitor)(text, vor_boolean) = set_wifi_monitor_channel_name;
static vor_int32 (*const set_stop_bit)(vor_uchar, vor_uchar, vor_uint32, vor_boolean) = vor_cfg_set_modbus_stop_bit;
static vor_int32 (*const set_threshold)(text, vor_int16, vor_int16, vor_int32,
                                        vor_uchar) = vor_cfg_towermon_obj_temp_sensor_threshold_set;
static vor_int32 (*const set_device_id)(vor_uint32, vor_uchar) = vor_cfg_set_device_id;
static vor_char* (*const get_command)(VOR_CFG_PROTO*, vor_int32*) = vor_cfg_proto_get_command;

#define REQUIRE(ending)                                                                                                \
    if (!(ending)) {                                                                                                   \
        return #ending;                                                                                                \
    }

/* With no endpoint bound: the first call that does not end as it must, NULL for none. */
const char* header_c11_calls(void)
{
    char empty[] = "";
    vor_int16 temperature = 0;
    SUB1G_CONFIG_REG* registers = NULL;
    vor_int32 length = 0;

    vor_cfg_set_ipc_endpoint(NULL);
    REQUIRE(restart(0) == -1)
    REQUIRE(set_ip_address(0, empty, empty, 0) == -1)
    REQUIRE(set_dhcp_server_dns(empty, 1, 0, empty) == -1)
    REQUIRE(set_debug_info(1, empty, empty) == -1)
    REQUIRE(set_log_file(1, empty, empty, empty, empty, empty, 0) == -1)
    REQUIRE(set_latitude(1, empty) == -1)
    REQUIRE(set_sysloginfo(0, empty, 0, 0) == -1)
    REQUIRE(set_hostname(empty) == -1)
    REQUIRE(get_temperature(&temperature) == -1)
    REQUIRE(set_service_chain(0, empty, 1, empty) == -1)
    REQUIRE(set_keep_alive(0, 0) == -1)
    REQUIRE(set_credentials(empty, 0, 0) == -1)
    REQUIRE(set_ntp_server(empty, 0, 0) == -1)
    REQUIRE(activate_gsm(0) == -1)
    REQUIRE(get_gpio_statistics(0) == NULL)
    REQUIRE(get_adc_statistics(0, 0) == NULL)
    REQUIRE(set_serial_polling(0, 0, 0) == -1)
    REQUIRE(set_sensor_channel(empty, empty, 0) == -1)
    REQUIRE(get_registers(&registers) == -1)
    REQUIRE(set_can_id(0, 0, 0) == -1)
    REQUIRE(set_lora_channel(0, empty, 0) == -1)
    REQUIRE(enable_pcu(0) == -1)
    REQUIRE(name_wifi_monitor(empty, 0) == -1)
    REQUIRE(set_stop_bit(0, 0, 0, 0) == -1)
    REQUIRE(set_threshold(empty, 0, 0, 0, 0) == -1)
    REQUIRE(set_device_id(0, 0) == -1)
    REQUIRE(get_command(NULL, &length) == NULL)
    return NULL;
}
