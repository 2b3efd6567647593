#include <device_mgmt/towermon.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

namespace {

// The message of six kinds of object, which holds the name, not the kind.
template <auto Function>
consteval auto id(std::string_view name, std::string_view example)
{
    return call<Function>(name, {object("sensor_name"), "id", unsent("option")}, example).changes("physical-id");
}

template <auto Function>
consteval auto threshold(std::string_view name, std::string_view example)
{
    return call<Function>(name,
                          {object("sensor_name"), object("threshold"), "criticality",
                           number("threshold_value").fits<vor_int16>(), "option"},
                          example);
}

} // namespace

FAMILY(towermon,
       call<vor_cfg_towermon_obj_aircon_channel_name>("obj-aircon-channel-name",
                                                      {object("sensor_name"), "channel_name", "option"},
                                                      "aircon-1 aircon-1-channel 1"),
       call<vor_cfg_towermon_obj_battery_channel_name>("obj-battery-channel-name",
                                                       {object("sensor_name"), "channel_name", "option"},
                                                       "battery-1 battery-1-channel 1"),
       call<vor_cfg_towermon_obj_fan_channel_name>("obj-fan-channel-name",
                                                   {object("sensor_name"), "channel_name", "option"},
                                                   "fan-1 fan-1-channel 1"),
       call<vor_cfg_towermon_obj_genset_channel_name>("obj-genset-channel-name",
                                                      {object("sensor_name"), "channel_name", "option"},
                                                      "genset-1 genset-1-channel 1"),
       call<vor_cfg_towermon_obj_power_measurement_channel_name>("obj-power-measurement-channel-name",
                                                                 {object("sensor_name"), "channel_name", "option"},
                                                                 "mains-meter mains-meter-channel 1"),
       call<vor_cfg_towermon_obj_power_supply_channel_name>("obj-power-supply-channel-name",
                                                            {object("sensor_name"), "channel_name", "option"},
                                                            "rectifier-1 rectifier-1-channel 1"),
       call<vor_cfg_towermon_obj_ups_channel_name>("obj-ups-channel-name",
                                                   {object("sensor_name"), "channel_name", "option"},
                                                   "ups-1 ups-1-channel 1"),
       call<vor_cfg_towermon_obj_temp_sensor_channel_name>("obj-temp-sensor-channel-name",
                                                           {object("sensor_name"), "channel_name", "option"},
                                                           "temp-1 temp-1-channel 1"),
       call<vor_cfg_towermon_obj_humidity_sensor_channel_name>("obj-humidity-sensor-channel-name",
                                                               {object("sensor_name"), "channel_name", "option"},
                                                               "humidity-1 humidity-1-channel 1"),
       call<vor_cfg_towermon_obj_proximity_sensor_channel_name>("obj-proximity-sensor-channel-name",
                                                                {object("sensor_name"), "channel_name", "option"},
                                                                "fence-1 fence-1-channel 1"),
       call<vor_cfg_towermon_obj_fire_sensor_channel_name>("obj-fire-sensor-channel-name",
                                                           {object("sensor_name"), "channel_name", "option"},
                                                           "smoke-1 smoke-1-channel 1"),
       call<vor_cfg_towermon_obj_door_sensor_channel_name>("obj-door-sensor-channel-name",
                                                           {object("sensor_name"), "channel_name", "option"},
                                                           "door-1 door-1-channel 1"),
       id<vor_cfg_towermon_obj_aircon_physical_id>("obj-aircon-physical-id", "aircon-1 1 1"),
       id<vor_cfg_towermon_obj_battery_physical_id>("obj-battery-physical-id", "battery-1 2 1"),
       id<vor_cfg_towermon_obj_fan_physical_id>("obj-fan-physical-id", "fan-1 3 1"),
       id<vor_cfg_towermon_obj_genset_physical_id>("obj-genset-physical-id", "genset-1 4 1"),
       id<vor_cfg_towermon_obj_power_measurement_physical_id>("obj-power-measurement-physical-id", "mains-meter 5 1"),
       id<vor_cfg_towermon_obj_power_supply_physical_id>("obj-power-supply-physical-id", "rectifier-1 6 1"),
       call<vor_cfg_towermon_obj_ups_physical_id>("obj-ups-physical-id",
                                                  {object("sensor_name"), "id", unsent("option")}, "ups-1 7 1"),
       call<vor_cfg_towermon_obj_battery_ups_name>("obj-battery-ups-name",
                                                   {object("battery_name"), "ups_name", unsent("option")},
                                                   "battery-1 ups-1 1"),
       call<vor_cfg_towermon_obj_battery_string_num>("obj-battery-string-num",
                                                     {object("battery_name"), "string_num", unsent("option")},
                                                     "battery-1 2 1"),
       call<vor_cfg_towermon_obj_genset_alerts>("obj-genset-alerts",
                                                {object("sensor_name"), "alert_1", "alert_2", "alert_3", "alert_4",
                                                 "alert_5", "alert_6", "alert_7", "alert_8", "alert_9"},
                                                "genset-1 10 20 30 40 50 60 70 80 90"),
       call<vor_cfg_towermon_obj_power_measurement_alerts>(
           "obj-power-measurement-alerts",
           {object("sensor_name"), "alert_1", "alert_2", "alert_3", "alert_4", "alert_5", "alert_6", "alert_7",
            "alert_8", "alert_9", "alert_10", "alert_11", "alert_12"},
           "mains-meter 180 190 200 210 220 230 240 250 260 270 280 290"),
       call<vor_cfg_towermon_obj_power_supply_alerts>("obj-power-supply-alerts",
                                                      {object("sensor_name"), "alert_1", "alert_2", "alert_3",
                                                       "alert_4", "alert_5", "alert_6", "alert_7", "alert_8", "alert_9",
                                                       "alert_10", "alert_11", "alert_12"},
                                                      "rectifier-1 43 44 45 46 47 48 49 50 51 52 53 54"),
       call<vor_cfg_towermon_obj_ups_alerts>("obj-ups-alerts", {object("sensor_name"), "alert_1", "alert_2"},
                                             "ups-1 20 10"),
       threshold<vor_cfg_towermon_obj_temp_sensor_threshold_set>("obj-temp-sensor-threshold-set", "temp-1 1 2 45 1"),
       threshold<vor_cfg_towermon_obj_humidity_sensor_threshold_set>("obj-humidity-sensor-threshold-set",
                                                                     "humidity-1 1 2 85 1"),
       call<vor_cfg_towermon_set_tower_name>("set-tower-name", {"tower_name", unsent("option")}, "\"Tower 17\" 1"),
       call<vor_cfg_towermon_set_tower_location>("set-tower-location", {"tower_location", unsent("option")},
                                                 "\"hill road, Coorg\" 1"),
       call<vor_cfg_towermon_set_tower_id>("set-tower-id", {"sensor_id", unsent("option")}, "17 1"))

} // namespace vorcfg::rows
