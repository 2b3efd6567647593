#include <device_mgmt/mqtt.h>

#include "calls.hpp"

CALLS(mqtt) = {
    CALL(vor_cfg_set_mqtt_username_and_password("up"_t, 200, "bob"_t, "secret"_t, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 12 str 'bob' | 13 str 'secret'",
         option_request_last_empty_dropped),
    CALL(vor_cfg_set_mqtt_server_config("up"_t, 200, "10.0.0.9"_t, -3, 202, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 7 str '10.0.0.9' | 8 i16 -3 | 32 raw ca; "
         "prints `entrd api\\ngoing to send\\n`",
         option_request_last_empty_dropped_prints),
    CALL(vor_cfg_mqtt_activate_session("up"_t, 200), "sap 15 id 0xf009 one-way | 10 str 'up'", sent_chain_left),
    CALL(vor_cfg_mqtt_deactivate_session("up"_t, 200), "sap 15 id 0xf00a one-way | 10 str 'up'", sent_chain_left),
    CALL(vor_cfg_set_mqtt_application("up"_t, 200, "portal"_t, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 11 str 'portal'", option_request_last),
    CALL(vor_cfg_set_mqtt_bind_addr("up"_t, 200, 65535, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 30 i16 -1", option_request_last),
    CALL(vor_cfg_set_mqtt_registration_template("up"_t, 200, "reg.json"_t, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 9 str 'reg.json'", option_request_last),
    CALL(vor_cfg_set_mqtt_topic("site/1"_t, 201), "sap 15 id 0xf005 option 0xc9 | 2 str 'site/1'", option_request_last),
    CALL(vor_cfg_set_mqtt_message("hello"_t, 201), "sap 15 id 0xf005 option 0xc9 | 14 str 'hello'",
         option_request_last),
    CALL(vor_cfg_set_mqtt_qos_level(200, 201), "sap 15 id 0xf005 option 0xc9 | 15 i16 200", option_request_last),
    CALL(vor_cfg_set_mqtt_retain_flag(200, 201), "sap 15 id 0xf005 option 0xc9 | 16 i16 200", option_request_last),
    CALL(vor_cfg_set_mqtt_keep_alive_interval(70000, 201), "sap 15 id 0xf005 option 0xc9 | 5 i32 70000",
         option_request_last),
    CALL(vor_cfg_set_mqtt_clean_session_flag(65537, 201), "sap 15 id 0xf005 option 0xc9 | 4 i16 1",
         option_request_last),
};
