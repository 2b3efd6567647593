#include <device_mgmt/mqtt.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(mqtt,
       call<vor_cfg_set_mqtt_username_and_password>("set-username-and-password",
                                                    {object("service_name"), "protocol", "username",
                                                     text("password").secret(), "config_option"},
                                                    "uplink 1 tower17 - 1"),
       call<vor_cfg_set_mqtt_server_config>("set-server-config",
                                            {object("service_name"), "protocol", "ip_address", port("port_number"),
                                             "server_type", "config_option"},
                                            "uplink 1 203.0.113.20 8883 1 1"),
       call<vor_cfg_mqtt_activate_session>("activate-session", {object("service_name"), unsent("protocol")}, "uplink 1")
           .marked(acts)
           .changes("session"),
       call<vor_cfg_mqtt_deactivate_session>("deactivate-session", {object("service_name"), unsent("protocol")},
                                             "uplink 1")
           .marked(acts)
           .changes("session"),
       call<vor_cfg_set_mqtt_application>("set-application",
                                          {object("service_name"), "protocol", "app_name", "config_option"},
                                          "uplink 1 telemetry 1"),
       call<vor_cfg_set_mqtt_bind_addr>("set-bind-addr",
                                        {object("service_name"), "protocol", "interface_no", "config_option"},
                                        "uplink 1 0 1"),
       call<vor_cfg_set_mqtt_registration_template>("set-registration-template",
                                                    {object("service_name"), "protocol", "reg_template",
                                                     "config_option"},
                                                    "uplink 1 register.json 1"),
       call<vor_cfg_set_mqtt_topic>("set-topic", {"topic_name", "config_option"}, "site/17/data 1"),
       call<vor_cfg_set_mqtt_message>("set-message", {"message", "config_option"}, "\"tower 17 is up\" 1"),
       call<vor_cfg_set_mqtt_qos_level>("set-qos-level", {"qos", "config_option"}, "1 1"),
       call<vor_cfg_set_mqtt_retain_flag>("set-retain-flag", {"retain_flag", "config_option"}, "0 1"),
       call<vor_cfg_set_mqtt_keep_alive_interval>("set-keep-alive-interval", {"interval", "config_option"}, "60 1"),
       call<vor_cfg_set_mqtt_clean_session_flag>("set-clean-session-flag",
                                                 {number("clean_session_flag").fits<vor_uint16>(), "config_option"},
                                                 "1 1"))

} // namespace vorcfg::rows
