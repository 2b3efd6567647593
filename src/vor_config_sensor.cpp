// Sensor flows and templates (sensormgr).
#include <device_mgmt/sensor.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame sensor = sap(14) | clears_errno | lone_request_dropped | null_payload_drops | request_dropped_first |
                         id_low_half | empty_answer_keeps;
constexpr MessageId flow_setting = 0xe003;

} // namespace

vor_int32 vor_cfg_set_flow_data_template(vor_char* sensor_name, vor_char* flow_name, vor_char* template_file,
                                         vor_boolean set_flag)
{
    return request<sensor, flow_setting>(int16<6>(set_flag), str<1>(sensor_name), str<2>(flow_name),
                                         str<4>(template_file));
}

vor_int32 vor_cfg_set_flow_registration_template(vor_char* sensor_name, vor_char* flow_name, vor_char* template_file,
                                                 vor_boolean set_flag)
{
    return request<sensor, flow_setting>(int16<6>(set_flag), str<1>(sensor_name), str<2>(flow_name),
                                         str<5>(template_file));
}

vor_int32 vor_cfg_set_sensor_flow_chain(vor_char* sensor_name, vor_char* flow_name, vor_char* chain_name,
                                        vor_boolean set_flag)
{
    return request<sensor, flow_setting>(int16<6>(set_flag), str<1>(sensor_name), str<2>(flow_name),
                                         str<3>(chain_name));
}

vor_int32 vor_cfg_set_sensor_channel(vor_char* sensor_name, vor_char* channel_name, vor_boolean set_flag)
{
    return request<sensor, 0xe005>(int16<6>(set_flag), str<1>(sensor_name), str<7>(channel_name));
}
