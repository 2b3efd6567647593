#include <device_mgmt/modbus.h>

#include "calls.hpp"

CALLS(modbus) = {
    CALL(vor_cfg_set_modbus_channel_name(200, "meter"_t, 0xffffffff, 201),
         "sap 20 id 0x14003 | 65 i16 200 | 68 str 'meter' | 79 i16 201 | 73 i32 -1", answered_place_kept),
    CALL(vor_cfg_set_modbus_baudrate(200, "9600"_t, 70000, 201),
         "sap 20 id 0x14003 | 65 i16 200 | 69 str '9600' | 79 i16 201 | 73 i32 70000", answered_place_kept),
    CALL(vor_cfg_set_modbus_parity(200, "even"_t, 70000, 201),
         "sap 20 id 0x14003 | 65 i16 200 | 70 str 'even' | 79 i16 201 | 73 i32 70000", answered_place_kept),
    CALL(vor_cfg_set_modbus_data_bit(200, 0xffffffff, 70000, 201),
         "sap 20 id 0x14003 | 65 i16 200 | 71 i32 -1 | 79 i16 201 | 73 i32 70000", answered_place_kept),
    CALL(vor_cfg_set_modbus_stop_bit(200, 202, 70000, 201),
         "sap 20 id 0x14003 | 65 i16 200 | 72 i32 202 | 79 i16 201 | 73 i32 70000", answered_place_kept),
    CALL(vor_cfg_set_modbus_slave_id(200, 202, 70000, 201),
         "sap 20 id 0x14003 | 65 i16 200 | 87 i16 202 | 73 i32 70000 | 79 i16 201", answered_place_kept),
    CALL(vor_cfg_set_modbus_reg_grp_name(200, "grid"_t, 70000, 201),
         "sap 20 id 0x14003 | 65 i16 200 | 74 str 'grid' | 79 i16 201 | 73 i32 70000", answered),

    CALL(vor_cfg_set_modbus_config_polling("grid"_t, 70000, 200, 201, 0xffffffff, 202),
         "sap 20 id 0x14006 | 74 str 'grid' | 77 i32 70000 | 75 i16 200 | 66 i16 201 | 67 i32 -1 | 79 i16 202",
         answered),
    CALL(vor_cfg_set_modbus_query_config_polling("grid"_t, "q"_t, 200, 203, 201, 70000, 202),
         "sap 20 id 0x14006 | 74 str 'grid' | 86 str 'q' | 75 i16 200 | 66 i16 201 | 76 i16 203 | 67 i32 70000 | 79 "
         "i16 202",
         answered),
    CALL(vor_cfg_reset_modbus_config_mode("grid"_t, 70000, 200, 201, 202),
         "sap 20 id 0x14006 | 74 str 'grid' | 77 i32 70000 | 75 i16 200 | 66 i16 201 | 79 i16 202", answered),
    CALL(vor_cfg_set_modbus_reg_config("grid"_t, 70000, 203, 0xffffffff, 200, 202),
         "sap 20 id 0x14006 | 74 str 'grid' | 77 i32 70000 | 75 i16 200 | 76 i16 203 | 78 i32 -1 | 79 i16 202",
         answered),
    CALL(vor_cfg_set_modbus_query_config("grid"_t, "q"_t, 203, 200, 202),
         "sap 20 id 0x14006 | 74 str 'grid' | 86 str 'q' | 75 i16 200 | 76 i16 203 | 79 i16 202", answered),

    CALL(vor_cfg_set_modbus_tcp_service_protocol("mb"_t, 200, -1, 201),
         "sap 20 id 0x14008 | 82 str 'mb' | 87 i16 200 | 85 i16 -1 | 79 i16 201", answered_place_kept),
    CALL(vor_cfg_set_modbus_tcp_slave_id("mb"_t, 70000, 201),
         "sap 20 id 0x14008 | 82 str 'mb' | 73 i32 70000 | 79 i16 201", answered_place_kept),
    CALL(vor_cfg_set_modbus_tcp_slave_ip("mb"_t, "10.0.0.9"_t, 70000, 201),
         "sap 20 id 0x14008 | 82 str 'mb' | 83 str '10.0.0.9' | 73 i32 70000 | 79 i16 201", answered),
    CALL(vor_cfg_set_modbus_tcp_slave_port("mb"_t, "502"_t, 70000, 201),
         "sap 20 id 0x14008 | 82 str 'mb' | 84 str '502' | 73 i32 70000 | 79 i16 201", answered),
    CALL(vor_cfg_set_modbus_tcp_reg_grp_name("mb"_t, "grid"_t, 70000, 201),
         "sap 20 id 0x14008 | 82 str 'mb' | 74 str 'grid' | 79 i16 201 | 73 i32 70000", answered),
    CALL(vor_cfg_set_modbus_tcp_channel_name("mb"_t, "meter"_t, 0xffffffff, 201),
         "sap 20 id 0x14008 | 82 str 'mb' | 68 str 'meter' | 79 i16 201 | 73 i32 -1", answered_place_kept),
};
