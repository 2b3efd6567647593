// The monitored objects of a tower site and the tower's identity (SAP 240).
//
// An object names itself under tag 19; the battery does so under tag 30, and
// the shared physical-id request under tag 6, elsewhere the channel's.
#include <device_mgmt/towermon.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame towermon = sap(240) | clears_errno; // answers compared in all 32 bits, lone request kept

constexpr MessageId aircon = 0x15003;
constexpr MessageId physical_id = 0x15003; // of all kinds but the UPS; the air conditioner's differs by its tags
constexpr MessageId battery = 0x15004;
constexpr MessageId fan = 0x15005;
constexpr MessageId genset = 0x15006;
constexpr MessageId power_measurement = 0x15007;
constexpr MessageId power_supply = 0x15008;
constexpr MessageId ups = 0x15009;
constexpr MessageId temp_sensor = 0x1500a;
constexpr MessageId temp_threshold = 0x1500b;
constexpr MessageId humidity_sensor = 0x1500c;
constexpr MessageId humidity_threshold = 0x1500d;
constexpr MessageId proximity_sensor = 0x1500e;
constexpr MessageId fire_sensor = 0x1500f;
constexpr MessageId door_sensor = 0x15010;

} // namespace

vor_int32 vor_cfg_towermon_obj_aircon_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, aircon>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_battery_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, battery>(str<30>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_fan_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, fan>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_genset_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, genset>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_power_measurement_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                              vor_uchar option)
{
    return request<towermon, power_measurement>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_power_supply_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                         vor_uchar option)
{
    return request<towermon, power_supply>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_ups_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, ups>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_temp_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, temp_sensor>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_humidity_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                            vor_uchar option)
{
    return request<towermon, humidity_sensor>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_proximity_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name,
                                                             vor_uchar option)
{
    return request<towermon, proximity_sensor>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_fire_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, fire_sensor>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_door_sensor_channel_name(vor_char* sensor_name, vor_char* channel_name, vor_uchar option)
{
    return request<towermon, door_sensor>(str<19>(sensor_name), str<6>(channel_name), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_aircon_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar /*option*/)
{
    return request<towermon, physical_id>(str<6>(sensor_name), int16<23>(id));
}

vor_int32 vor_cfg_towermon_obj_battery_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar /*option*/)
{
    return request<towermon, physical_id>(str<6>(sensor_name), int16<23>(id));
}

vor_int32 vor_cfg_towermon_obj_fan_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar /*option*/)
{
    return request<towermon, physical_id>(str<6>(sensor_name), int16<23>(id));
}

vor_int32 vor_cfg_towermon_obj_genset_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar /*option*/)
{
    return request<towermon, physical_id>(str<6>(sensor_name), int16<23>(id));
}

vor_int32 vor_cfg_towermon_obj_power_measurement_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar /*option*/)
{
    return request<towermon, physical_id>(str<6>(sensor_name), int16<23>(id));
}

vor_int32 vor_cfg_towermon_obj_power_supply_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar /*option*/)
{
    return request<towermon, physical_id>(str<6>(sensor_name), int16<23>(id));
}

vor_int32 vor_cfg_towermon_obj_ups_physical_id(vor_char* sensor_name, vor_uchar id, vor_uchar /*option*/)
{
    return request<towermon, ups>(str<19>(sensor_name), int16<23>(id));
}

vor_int32 vor_cfg_towermon_obj_battery_ups_name(vor_char* battery_name, vor_char* ups_name, vor_uchar /*option*/)
{
    return request<towermon, battery>(str<30>(battery_name), str<31>(ups_name));
}

vor_int32 vor_cfg_towermon_obj_battery_string_num(vor_char* battery_name, vor_uint16 string_num, vor_uchar /*option*/)
{
    return request<towermon, battery>(str<30>(battery_name), int16<32>(string_num));
}

vor_int32 vor_cfg_towermon_obj_genset_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2,
                                             vor_int32 alert_3, vor_int32 alert_4, vor_int32 alert_5, vor_int32 alert_6,
                                             vor_int32 alert_7, vor_int32 alert_8, vor_int32 alert_9)
{
    return request<towermon, genset>(str<19>(sensor_name), int32<7>(alert_1), int32<8>(alert_2), int32<9>(alert_3),
                                     int32<10>(alert_4), int32<11>(alert_5), int32<12>(alert_6), int32<13>(alert_7),
                                     int32<14>(alert_8), int32<15>(alert_9));
}

vor_int32 vor_cfg_towermon_obj_power_measurement_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2,
                                                        vor_int32 alert_3, vor_int32 alert_4, vor_int32 alert_5,
                                                        vor_int32 alert_6, vor_int32 alert_7, vor_int32 alert_8,
                                                        vor_int32 alert_9, vor_int32 alert_10, vor_int32 alert_11,
                                                        vor_int32 alert_12)
{
    return request<towermon, power_measurement>(
        str<19>(sensor_name), int32<7>(alert_1), int32<8>(alert_2), int32<9>(alert_3), int32<10>(alert_4),
        int32<11>(alert_5), int32<12>(alert_6), int32<13>(alert_7), int32<14>(alert_8), int32<15>(alert_9),
        int32<16>(alert_10), int32<17>(alert_11), int32<18>(alert_12));
}

vor_int32 vor_cfg_towermon_obj_power_supply_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2,
                                                   vor_int32 alert_3, vor_int32 alert_4, vor_int32 alert_5,
                                                   vor_int32 alert_6, vor_int32 alert_7, vor_int32 alert_8,
                                                   vor_int32 alert_9, vor_int32 alert_10, vor_int32 alert_11,
                                                   vor_int32 alert_12)
{
    return request<towermon, power_supply>(
        str<19>(sensor_name), int32<7>(alert_1), int32<8>(alert_2), int32<9>(alert_3), int32<10>(alert_4),
        int32<11>(alert_5), int32<12>(alert_6), int32<13>(alert_7), int32<14>(alert_8), int32<15>(alert_9),
        int32<16>(alert_10), int32<17>(alert_11), int32<18>(alert_12));
}

vor_int32 vor_cfg_towermon_obj_ups_alerts(vor_char* sensor_name, vor_int32 alert_1, vor_int32 alert_2)
{
    return request<towermon, ups>(str<19>(sensor_name), int32<7>(alert_1), int32<8>(alert_2));
}

vor_int32 vor_cfg_towermon_obj_temp_sensor_threshold_set(vor_char* sensor_name, vor_int16 threshold,
                                                         vor_int16 criticality, vor_int32 threshold_value,
                                                         vor_uchar option)
{
    return request<towermon, temp_threshold>(str<19>(sensor_name), int16<20>(threshold), int16<21>(criticality),
                                             low16<22>(threshold_value), int16<4>(option));
}

vor_int32 vor_cfg_towermon_obj_humidity_sensor_threshold_set(vor_char* sensor_name, vor_int16 threshold,
                                                             vor_int16 criticality, vor_int32 threshold_value,
                                                             vor_uchar option)
{
    return request<towermon, humidity_threshold>(str<19>(sensor_name), int16<20>(threshold), int16<21>(criticality),
                                                 low16<22>(threshold_value), int16<4>(option));
}

vor_int32 vor_cfg_towermon_set_tower_name(vor_char* tower_name, vor_uchar /*option*/)
{
    return request<towermon, 0x15011>(str<24>(tower_name));
}

vor_int32 vor_cfg_towermon_set_tower_location(vor_char* tower_location, vor_uchar /*option*/)
{
    return request<towermon, 0x15012>(str<25>(tower_location));
}

vor_int32 vor_cfg_towermon_set_tower_id(vor_uint32 sensor_id, vor_uchar /*option*/)
{
    return request<towermon, 0x15013>(int32<26>(sensor_id));
}
