#include <device_mgmt/towermon.h>

#include "calls.hpp"

CALLS(towermon) = {
    CALL(vor_cfg_towermon_obj_aircon_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15003 | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_battery_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15004 | 30 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_fan_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15005 | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_genset_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15006 | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_power_measurement_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15007 | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_power_supply_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15008 | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_ups_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15009 | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_temp_sensor_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x1500a | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_humidity_sensor_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x1500c | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_proximity_sensor_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x1500e | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_fire_sensor_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x1500f | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),
    CALL(vor_cfg_towermon_obj_door_sensor_channel_name("o"_t, "ch"_t, 200),
         "sap 240 id 0x15010 | 19 str 'o' | 6 str 'ch' | 4 i16 200", answered),

    CALL(vor_cfg_towermon_obj_aircon_physical_id("o"_t, 200, 1), "sap 240 id 0x15003 | 6 str 'o' | 23 i16 200",
         answered),
    CALL(vor_cfg_towermon_obj_battery_physical_id("o"_t, 200, 1), "sap 240 id 0x15003 | 6 str 'o' | 23 i16 200",
         answered),
    CALL(vor_cfg_towermon_obj_fan_physical_id("o"_t, 200, 1), "sap 240 id 0x15003 | 6 str 'o' | 23 i16 200", answered),
    CALL(vor_cfg_towermon_obj_genset_physical_id("o"_t, 200, 1), "sap 240 id 0x15003 | 6 str 'o' | 23 i16 200",
         answered),
    CALL(vor_cfg_towermon_obj_power_measurement_physical_id("o"_t, 200, 1),
         "sap 240 id 0x15003 | 6 str 'o' | 23 i16 200", answered),
    CALL(vor_cfg_towermon_obj_power_supply_physical_id("o"_t, 200, 1), "sap 240 id 0x15003 | 6 str 'o' | 23 i16 200",
         answered),
    CALL(vor_cfg_towermon_obj_ups_physical_id("o"_t, 200, 1), "sap 240 id 0x15009 | 19 str 'o' | 23 i16 200", answered),
    CALL(vor_cfg_towermon_obj_battery_ups_name("b"_t, "u"_t, 200), "sap 240 id 0x15004 | 30 str 'b' | 31 str 'u'",
         answered),
    CALL(vor_cfg_towermon_obj_battery_string_num("b"_t, 65535, 200), "sap 240 id 0x15004 | 30 str 'b' | 32 i16 -1",
         answered),

    CALL(vor_cfg_towermon_obj_genset_alerts("o"_t, -1, 70002, 3, 4, 5, 6, 7, 8, 70009),
         "sap 240 id 0x15006 | 19 str 'o' | 7 i32 -1 | 8 i32 70002 | 9 i32 3 | 10 i32 4 | 11 i32 5 | 12 i32 6 | 13 i32 "
         "7 | 14 i32 8 | 15 i32 70009",
         answered),
    CALL(vor_cfg_towermon_obj_power_measurement_alerts("o"_t, -1, 70002, 3, 4, 5, 6, 7, 8, 9, 10, 11, 70012),
         "sap 240 id 0x15007 | 19 str 'o' | 7 i32 -1 | 8 i32 70002 | 9 i32 3 | 10 i32 4 | 11 i32 5 | 12 i32 6 | 13 i32 "
         "7 | 14 i32 8 | 15 i32 9 "
         "| 16 i32 10 | 17 i32 11 | 18 i32 70012",
         answered),
    CALL(vor_cfg_towermon_obj_power_supply_alerts("o"_t, -1, 70002, 3, 4, 5, 6, 7, 8, 9, 10, 11, 70012),
         "sap 240 id 0x15008 | 19 str 'o' | 7 i32 -1 | 8 i32 70002 | 9 i32 3 | 10 i32 4 | 11 i32 5 | 12 i32 6 | 13 i32 "
         "7 | 14 i32 8 | 15 i32 9 "
         "| 16 i32 10 | 17 i32 11 | 18 i32 70012",
         answered),
    CALL(vor_cfg_towermon_obj_ups_alerts("o"_t, -1, 70002), "sap 240 id 0x15009 | 19 str 'o' | 7 i32 -1 | 8 i32 70002",
         answered),
    CALL(vor_cfg_towermon_obj_temp_sensor_threshold_set("o"_t, 200, -3, 70000, 201),
         "sap 240 id 0x1500b | 19 str 'o' | 20 i16 200 | 21 i16 -3 | 22 i16 4464 | 4 i16 201", answered),
    CALL(vor_cfg_towermon_obj_humidity_sensor_threshold_set("o"_t, 200, -3, -5, 201),
         "sap 240 id 0x1500d | 19 str 'o' | 20 i16 200 | 21 i16 -3 | 22 i16 -5 | 4 i16 201", answered),

    CALL(vor_cfg_towermon_set_tower_name("T-9"_t, 200), "sap 240 id 0x15011 | 24 str 'T-9'", answered),
    CALL(vor_cfg_towermon_set_tower_location("hill"_t, 200), "sap 240 id 0x15012 | 25 str 'hill'", answered),
    CALL(vor_cfg_towermon_set_tower_id(0xffffffff, 200), "sap 240 id 0x15013 | 26 i32 -1", answered),
};
