#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange settings = request(0xf005);
constexpr std::string_view option = "config_option";
constexpr Field service_name = text(10, "service_name");
constexpr Field protocol = int16(6, "protocol");

// Topic to clean-session name no service: they are the manager's current
// values, which it uses for whichever session it opens next.
constexpr MessageRow rows[] = {
    {settings, "vor_cfg_set_mqtt_username_and_password", "service {service_name}",
     option_and_chain(option, service_name, protocol, text(12, "username"), text(13, "password").secret())},
    {settings, "vor_cfg_set_mqtt_server_config", "service {service_name}",
     option_and_chain(option, service_name, protocol, text(7, "ip_address"), uint16(8, "port_number"),
                      byte(32, "server_type"))},
    {settings, "vor_cfg_set_mqtt_application", "service {service_name}",
     option_and_chain(option, service_name, protocol, text(11, "app_name"))},
    {settings, "vor_cfg_set_mqtt_bind_addr", "service {service_name}",
     option_and_chain(option, service_name, protocol, uint16(30, "interface_no"))},
    {settings, "vor_cfg_set_mqtt_registration_template", "service {service_name}",
     option_and_chain(option, service_name, protocol, text(9, "reg_template"))},
    {settings, "vor_cfg_set_mqtt_topic", "session", option_and_chain(option, text(2, "topic_name"))},
    {settings, "vor_cfg_set_mqtt_message", "session", option_and_chain(option, text(14, "message"))},
    {settings, "vor_cfg_set_mqtt_qos_level", "session", option_and_chain(option, int16(15, "qos"))},
    {settings, "vor_cfg_set_mqtt_retain_flag", "session", option_and_chain(option, int16(16, "retain_flag"))},
    {settings, "vor_cfg_set_mqtt_keep_alive_interval", "session", option_and_chain(option, uint32(5, "interval"))},
    {settings, "vor_cfg_set_mqtt_clean_session_flag", "session",
     option_and_chain(option, uint16(4, "clean_session_flag"))},
    {one_way(0xf009), "vor_cfg_mqtt_activate_session", "service {service_name}", chain(service_name), "active"},
    {one_way(0xf00a), "vor_cfg_mqtt_deactivate_session", "service {service_name}", chain(service_name), "active"},
};

extern const Family mqtt{"mqttmgr", rows};

} // namespace vorsim::families
