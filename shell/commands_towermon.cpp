#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_towermon_obj_aircon_channel_name>(
        "towermon", "obj-aircon-channel-name", "sensor_name channel_name option",
        "Binds an air conditioner to a data channel.", "aircon-1 aircon-1-channel 1"),
    command<vor_cfg_towermon_obj_battery_channel_name>(
        "towermon", "obj-battery-channel-name", "sensor_name channel_name option", "Binds a battery to a data channel.",
        "battery-1 battery-1-channel 1"),
    command<vor_cfg_towermon_obj_fan_channel_name>("towermon", "obj-fan-channel-name",
                                                   "sensor_name channel_name option", "Binds a fan to a data channel.",
                                                   "fan-1 fan-1-channel 1"),
    command<vor_cfg_towermon_obj_genset_channel_name>(
        "towermon", "obj-genset-channel-name", "sensor_name channel_name option",
        "Binds a generator set to a data channel.", "genset-1 genset-1-channel 1"),
    command<vor_cfg_towermon_obj_power_measurement_channel_name>(
        "towermon", "obj-power-measurement-channel-name", "sensor_name channel_name option",
        "Binds a power measurement to a data channel.", "mains-meter mains-meter-channel 1"),
    command<vor_cfg_towermon_obj_power_supply_channel_name>(
        "towermon", "obj-power-supply-channel-name", "sensor_name channel_name option",
        "Binds a power supply to a data channel.", "rectifier-1 rectifier-1-channel 1"),
    command<vor_cfg_towermon_obj_ups_channel_name>("towermon", "obj-ups-channel-name",
                                                   "sensor_name channel_name option", "Binds a UPS to a data channel.",
                                                   "ups-1 ups-1-channel 1"),
    command<vor_cfg_towermon_obj_temp_sensor_channel_name>(
        "towermon", "obj-temp-sensor-channel-name", "sensor_name channel_name option",
        "Binds a temperature sensor to a data channel.", "temp-1 temp-1-channel 1"),
    command<vor_cfg_towermon_obj_humidity_sensor_channel_name>(
        "towermon", "obj-humidity-sensor-channel-name", "sensor_name channel_name option",
        "Binds a humidity sensor to a data channel.", "humidity-1 humidity-1-channel 1"),
    command<vor_cfg_towermon_obj_proximity_sensor_channel_name>(
        "towermon", "obj-proximity-sensor-channel-name", "sensor_name channel_name option",
        "Binds a proximity sensor to a data channel.", "fence-1 fence-1-channel 1"),
    command<vor_cfg_towermon_obj_fire_sensor_channel_name>(
        "towermon", "obj-fire-sensor-channel-name", "sensor_name channel_name option",
        "Binds a fire sensor to a data channel.", "smoke-1 smoke-1-channel 1"),
    command<vor_cfg_towermon_obj_door_sensor_channel_name>(
        "towermon", "obj-door-sensor-channel-name", "sensor_name channel_name option",
        "Binds a door sensor to a data channel.", "door-1 door-1-channel 1"),
    command<vor_cfg_towermon_obj_aircon_physical_id>("towermon", "obj-aircon-physical-id", "sensor_name id option-",
                                                     "Gives an air conditioner its physical id.", "aircon-1 1 1"),
    command<vor_cfg_towermon_obj_battery_physical_id>("towermon", "obj-battery-physical-id", "sensor_name id option-",
                                                      "Gives a battery its physical id.", "battery-1 2 1"),
    command<vor_cfg_towermon_obj_fan_physical_id>("towermon", "obj-fan-physical-id", "sensor_name id option-",
                                                  "Gives a fan its physical id.", "fan-1 3 1"),
    command<vor_cfg_towermon_obj_genset_physical_id>("towermon", "obj-genset-physical-id", "sensor_name id option-",
                                                     "Gives a generator set its physical id.", "genset-1 4 1"),
    command<vor_cfg_towermon_obj_power_measurement_physical_id>(
        "towermon", "obj-power-measurement-physical-id", "sensor_name id option-",
        "Gives a power measurement its physical id.", "mains-meter 5 1"),
    command<vor_cfg_towermon_obj_power_supply_physical_id>("towermon", "obj-power-supply-physical-id",
                                                           "sensor_name id option-",
                                                           "Gives a power supply its physical id.", "rectifier-1 6 1"),
    command<vor_cfg_towermon_obj_ups_physical_id>("towermon", "obj-ups-physical-id", "sensor_name id option-",
                                                  "Gives a UPS its physical id.", "ups-1 7 1"),
    command<vor_cfg_towermon_obj_battery_ups_name>("towermon", "obj-battery-ups-name", "battery_name ups_name option-",
                                                   "Ties a battery to its UPS.", "battery-1 ups-1 1"),
    command<vor_cfg_towermon_obj_battery_string_num>("towermon", "obj-battery-string-num",
                                                     "battery_name string_num option-",
                                                     "Gives a battery its string number.", "battery-1 2 1"),
    command<vor_cfg_towermon_obj_genset_alerts>(
        "towermon", "obj-genset-alerts",
        "sensor_name alert_1 alert_2 alert_3 alert_4 alert_5 alert_6 alert_7 alert_8 alert_9",
        "Sets a generator set's 9 alert levels.", "genset-1 10 20 30 40 50 60 70 80 90"),
    command<vor_cfg_towermon_obj_power_measurement_alerts>(
        "towermon", "obj-power-measurement-alerts",
        "sensor_name alert_1 alert_2 alert_3 alert_4 alert_5 alert_6 alert_7 alert_8 alert_9 alert_10 alert_11 "
        "alert_12",
        "Sets a power measurement's 12 alert levels.", "mains-meter 180 190 200 210 220 230 240 250 260 270 280 290"),
    command<vor_cfg_towermon_obj_power_supply_alerts>("towermon", "obj-power-supply-alerts",
                                                      "sensor_name alert_1 alert_2 alert_3 alert_4 alert_5 alert_6 "
                                                      "alert_7 alert_8 alert_9 alert_10 alert_11 alert_12",
                                                      "Sets a power supply's 12 alert levels.",
                                                      "rectifier-1 43 44 45 46 47 48 49 50 51 52 53 54"),
    command<vor_cfg_towermon_obj_ups_alerts>("towermon", "obj-ups-alerts", "sensor_name alert_1 alert_2",
                                             "Sets a UPS's 2 alert levels.", "ups-1 20 10"),
    command<vor_cfg_towermon_obj_temp_sensor_threshold_set>(
        "towermon", "obj-temp-sensor-threshold-set", "sensor_name threshold criticality threshold_value option",
        "Sets a temperature sensor's threshold.", "temp-1 1 2 45 1"),
    command<vor_cfg_towermon_obj_humidity_sensor_threshold_set>(
        "towermon", "obj-humidity-sensor-threshold-set", "sensor_name threshold criticality threshold_value option",
        "Sets a humidity sensor's threshold.", "humidity-1 1 2 85 1"),
    command<vor_cfg_towermon_set_tower_name>("towermon", "set-tower-name", "tower_name option-",
                                             "Sets the tower's name.", "\"Tower 17\" 1"),
    command<vor_cfg_towermon_set_tower_location>("towermon", "set-tower-location", "tower_location option-",
                                                 "Sets the tower's location.", "\"hill road, Coorg\" 1"),
    command<vor_cfg_towermon_set_tower_id>("towermon", "set-tower-id", "sensor_id option-", "Sets the tower's id.",
                                           "17 1"),
};

std::span<const Row> towermon_rows()
{
    return rows;
}

} // namespace vorcfg
