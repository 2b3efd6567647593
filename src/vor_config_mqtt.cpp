// MQTT services and sessions (mqttmgr).
#include <device_mgmt/mqtt.h>

#include <cstdio>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame mqtt_service =
    sap(15) | lone_request_dropped | option_byte | null_payload_drops | id_low_half | request_dropped_last;
constexpr Frame mqtt =
    mqtt_service | empty_answer_keeps; // only credentials and server release the buffers on an empty answer
constexpr Frame session = sap(15) | one_way | null_payload_drops | sent_buffer_kept;
constexpr MessageId mqtt_setting = 0xf005;

} // namespace

vor_int32 vor_cfg_set_mqtt_username_and_password(vor_char* service_name, vor_uchar protocol, vor_char* username,
                                                 vor_char* password, vor_uchar config_option)
{
    return request<mqtt_service, mqtt_setting>(option(config_option), str<10>(service_name), int16<6>(protocol),
                                               str<12>(username), str<13>(password));
}

vor_int32 vor_cfg_set_mqtt_server_config(vor_char* service_name, vor_uchar protocol, vor_char* ip_address,
                                         vor_int16 port_number, vor_uchar server_type, vor_uchar config_option)
{
    std::puts("entrd api");
    Exchange exchange;
    const vor_int32 code =
        exchange.prepare<mqtt_service, mqtt_setting>(option(config_option), str<10>(service_name), int16<6>(protocol),
                                                     str<7>(ip_address), int16<8>(port_number), byte<32>(server_type));
    if (code != ok) {
        return code;
    }
    std::puts("going to send");
    return exchange.send_and_finish();
}

vor_int32 vor_cfg_mqtt_activate_session(vor_char* service_name, vor_uchar /*protocol*/)
{
    return request<session, 0xf009>(str<10>(service_name));
}

vor_int32 vor_cfg_mqtt_deactivate_session(vor_char* service_name, vor_uchar /*protocol*/)
{
    return request<session, 0xf00a>(str<10>(service_name));
}

vor_int32 vor_cfg_set_mqtt_application(vor_char* service_name, vor_uchar protocol, vor_char* app_name,
                                       vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), str<10>(service_name), int16<6>(protocol),
                                       str<11>(app_name));
}

vor_int32 vor_cfg_set_mqtt_bind_addr(vor_char* service_name, vor_uchar protocol, vor_uint16 interface_no,
                                     vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), str<10>(service_name), int16<6>(protocol),
                                       int16<30>(interface_no));
}

vor_int32 vor_cfg_set_mqtt_registration_template(vor_char* service_name, vor_uchar protocol, vor_char* reg_template,
                                                 vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), str<10>(service_name), int16<6>(protocol),
                                       str<9>(reg_template));
}

vor_int32 vor_cfg_set_mqtt_topic(vor_char* topic_name, vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), str<2>(topic_name));
}

vor_int32 vor_cfg_set_mqtt_message(vor_char* message, vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), str<14>(message));
}

vor_int32 vor_cfg_set_mqtt_qos_level(vor_uchar qos, vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), int16<15>(qos));
}

vor_int32 vor_cfg_set_mqtt_retain_flag(vor_uchar retain_flag, vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), int16<16>(retain_flag));
}

vor_int32 vor_cfg_set_mqtt_keep_alive_interval(vor_uint32 interval, vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), int32<5>(interval));
}

vor_int32 vor_cfg_set_mqtt_clean_session_flag(vor_uint32 clean_session_flag, vor_uchar config_option)
{
    return request<mqtt, mqtt_setting>(option(config_option), low16<4>(clean_session_flag));
}
