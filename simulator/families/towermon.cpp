#include "tables/families.hpp"

namespace vorsim::families {
namespace {

constexpr Field sensor_name = text(19, "sensor_name");
constexpr Field battery_name = text(30, "battery_name");
constexpr Field physical_id = int16(23, "id");

constexpr Field channel_name = text(6, "channel_name");
constexpr Field option = int16(4, "option");
constexpr Layout channel = chain(sensor_name, channel_name, option);

// The k-th level has tag 6 + k.
constexpr Layout alerts(std::uint16_t levels)
{
    constexpr std::string_view names[] = {"alert_1", "alert_2", "alert_3", "alert_4",  "alert_5",  "alert_6",
                                          "alert_7", "alert_8", "alert_9", "alert_10", "alert_11", "alert_12"};
    Layout layout = chain(sensor_name);
    for (std::uint16_t level = 1; level <= levels; ++level) {
        layout.add(int32(static_cast<std::uint16_t>(6 + level), names[level - 1]));
    }
    return layout;
}

constexpr Layout threshold =
    chain(sensor_name, int16(20, "threshold"), int16(21, "criticality"), int16(22, "threshold_value"), option);

constexpr Exchange aircon = request(0x15003);
constexpr Exchange battery = request(0x15004);
constexpr Exchange fan = request(0x15005);
constexpr Exchange genset = request(0x15006);
constexpr Exchange power_measurement = request(0x15007);
constexpr Exchange power_supply = request(0x15008);
constexpr Exchange ups = request(0x15009);

constexpr MessageRow rows[] = {
    {aircon, "vor_cfg_towermon_obj_aircon_channel_name", "aircon {sensor_name}", channel},
    {battery, "vor_cfg_towermon_obj_battery_channel_name", "battery {sensor_name}",
     chain(text(30, "sensor_name"), channel_name, option)},
    {fan, "vor_cfg_towermon_obj_fan_channel_name", "fan {sensor_name}", channel},
    {genset, "vor_cfg_towermon_obj_genset_channel_name", "genset {sensor_name}", channel},
    {power_measurement, "vor_cfg_towermon_obj_power_measurement_channel_name", "power measurement {sensor_name}",
     channel},
    {power_supply, "vor_cfg_towermon_obj_power_supply_channel_name", "power supply {sensor_name}", channel},
    {ups, "vor_cfg_towermon_obj_ups_channel_name", "ups {sensor_name}", channel},
    {request(0x1500a), "vor_cfg_towermon_obj_temp_sensor_channel_name", "temp sensor {sensor_name}", channel},
    {request(0x1500c), "vor_cfg_towermon_obj_humidity_sensor_channel_name", "humidity sensor {sensor_name}", channel},
    {request(0x1500e), "vor_cfg_towermon_obj_proximity_sensor_channel_name", "proximity sensor {sensor_name}", channel},
    {request(0x1500f), "vor_cfg_towermon_obj_fire_sensor_channel_name", "fire sensor {sensor_name}", channel},
    {request(0x15010), "vor_cfg_towermon_obj_door_sensor_channel_name", "door sensor {sensor_name}", channel},

    // Six kinds of object send the same message: it holds the name, not the kind.
    {aircon, "vor_cfg_towermon_obj_*_physical_id", "object {sensor_name}", chain(text(6, "sensor_name"), physical_id)},
    {ups, "vor_cfg_towermon_obj_ups_physical_id", "ups {sensor_name}", chain(sensor_name, physical_id)},

    {battery, "vor_cfg_towermon_obj_battery_ups_name", "battery {battery_name}",
     chain(battery_name, text(31, "ups_name"))},
    {battery, "vor_cfg_towermon_obj_battery_string_num", "battery {battery_name}",
     chain(battery_name, uint16(32, "string_num"))},

    {genset, "vor_cfg_towermon_obj_genset_alerts", "genset {sensor_name}", alerts(9)},
    {power_measurement, "vor_cfg_towermon_obj_power_measurement_alerts", "power measurement {sensor_name}", alerts(12)},
    {power_supply, "vor_cfg_towermon_obj_power_supply_alerts", "power supply {sensor_name}", alerts(12)},
    {ups, "vor_cfg_towermon_obj_ups_alerts", "ups {sensor_name}", alerts(2)},
    {request(0x1500b), "vor_cfg_towermon_obj_temp_sensor_threshold_set",
     "temp sensor {sensor_name} threshold {threshold}", threshold},
    {request(0x1500d), "vor_cfg_towermon_obj_humidity_sensor_threshold_set",
     "humidity sensor {sensor_name} threshold {threshold}", threshold},

    {request(0x15011), "vor_cfg_towermon_set_tower_name", "tower", chain(text(24, "tower_name"))},
    {request(0x15012), "vor_cfg_towermon_set_tower_location", "tower", chain(text(25, "tower_location"))},
    {request(0x15013), "vor_cfg_towermon_set_tower_id", "tower", chain(uint32(26, "sensor_id"))},
};

} // namespace

extern const Family towermon{"towermon", rows};

} // namespace vorsim::families
