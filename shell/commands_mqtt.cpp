#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_mqtt_username_and_password>("mqtt", "set-username-and-password",
                                                    "service_name protocol username password* config_option",
                                                    "Sets the credentials of an MQTT service.", "uplink 1 tower17 - 1"),
    command<vor_cfg_set_mqtt_server_config>("mqtt", "set-server-config",
                                            "service_name protocol ip_address port_number server_type config_option",
                                            "Points an MQTT service at its broker.", "uplink 1 203.0.113.20 8883 1 1"),
    command<vor_cfg_mqtt_activate_session>("mqtt", "activate-session", "service_name protocol-",
                                           "Starts an MQTT service's session.", "uplink 1"),
    command<vor_cfg_mqtt_deactivate_session>("mqtt", "deactivate-session", "service_name protocol-",
                                             "Ends an MQTT service's session.", "uplink 1"),
    command<vor_cfg_set_mqtt_application>("mqtt", "set-application", "service_name protocol app_name config_option",
                                          "Names the application an MQTT service serves.", "uplink 1 telemetry 1"),
    command<vor_cfg_set_mqtt_bind_addr>("mqtt", "set-bind-addr", "service_name protocol interface_no config_option",
                                        "Binds an MQTT service to an interface.", "uplink 1 0 1"),
    command<vor_cfg_set_mqtt_registration_template>(
        "mqtt", "set-registration-template", "service_name protocol reg_template config_option",
        "Sets the template an MQTT service registers with.", "uplink 1 register.json 1"),
    command<vor_cfg_set_mqtt_topic>("mqtt", "set-topic", "topic_name config_option", "Sets the current topic.",
                                    "site/17/data 1"),
    command<vor_cfg_set_mqtt_message>("mqtt", "set-message", "message config_option", "Sets the current message text.",
                                      "\"tower 17 is up\" 1"),
    command<vor_cfg_set_mqtt_qos_level>("mqtt", "set-qos-level", "qos config_option",
                                        "Sets the current quality of service.", "1 1"),
    command<vor_cfg_set_mqtt_retain_flag>("mqtt", "set-retain-flag", "retain_flag config_option",
                                          "Sets the current retain flag.", "0 1"),
    command<vor_cfg_set_mqtt_keep_alive_interval>("mqtt", "set-keep-alive-interval", "interval config_option",
                                                  "Sets the current keep-alive interval.", "60 1"),
    command<vor_cfg_set_mqtt_clean_session_flag>("mqtt", "set-clean-session-flag", "clean_session_flag config_option",
                                                 "Sets the current clean-session flag.", "1 1"),
};

std::span<const Row> mqtt_rows()
{
    return rows;
}

} // namespace vorcfg
