#include "calls.hpp"

namespace {

const Call calls[] = {
    CALL(vor_cfg_set_mqtt_username_and_password("up"_t, 200, "bob"_t, "secret"_t, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 12 str 'bob' | 13 str 'secret'", mqtt_server),
    CALL(vor_cfg_set_mqtt_server_config("up"_t, 200, "10.0.0.9"_t, -3, 202, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 7 str '10.0.0.9' | 8 i16 -3 | 32 raw ca; "
         "prints `entrd api\\ngoing to send\\n`",
         mqtt_server),
    CALL(vor_cfg_mqtt_activate_session("up"_t, 200), "sap 15 id 0xf009 one-way | 10 str 'up'", mqtt_session),
    CALL(vor_cfg_mqtt_deactivate_session("up"_t, 200), "sap 15 id 0xf00a one-way | 10 str 'up'", mqtt_session),
    CALL(vor_cfg_set_mqtt_application("up"_t, 200, "portal"_t, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 11 str 'portal'", mqtt),
    CALL(vor_cfg_set_mqtt_bind_addr("up"_t, 200, 65535, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 30 i16 -1", mqtt),
    CALL(vor_cfg_set_mqtt_registration_template("up"_t, 200, "reg.json"_t, 201),
         "sap 15 id 0xf005 option 0xc9 | 10 str 'up' | 6 i16 200 | 9 str 'reg.json'", mqtt),
    CALL(vor_cfg_set_mqtt_topic("site/1"_t, 201), "sap 15 id 0xf005 option 0xc9 | 2 str 'site/1'", mqtt),
    CALL(vor_cfg_set_mqtt_message("hello"_t, 201), "sap 15 id 0xf005 option 0xc9 | 14 str 'hello'", mqtt),
    CALL(vor_cfg_set_mqtt_qos_level(200, 201), "sap 15 id 0xf005 option 0xc9 | 15 i16 200", mqtt),
    CALL(vor_cfg_set_mqtt_retain_flag(200, 201), "sap 15 id 0xf005 option 0xc9 | 16 i16 200", mqtt),
    CALL(vor_cfg_set_mqtt_keep_alive_interval(70000, 201), "sap 15 id 0xf005 option 0xc9 | 5 i32 70000", mqtt),
    SENDS(vor_cfg_set_mqtt_keep_alive_interval(0xffffffff, 201), "sap 15 id 0xf005 option 0xc9 | 5 i32 -1"),
    CALL(vor_cfg_set_mqtt_clean_session_flag(65537, 201), "sap 15 id 0xf005 option 0xc9 | 4 i16 1", mqtt),
};

} // namespace

CALL_TESTS(mqtt, calls)

TEST(mqtt, the_server_call_tells_how_far_it_came)
{
    const struct {
        void (*script)();
        const char* printed;
    } rows[] = {
        {[] { vor_cfg_set_ipc_endpoint(nullptr); }, "entrd api\n"},
        {[] { fake::script.failing_buffer = 2; }, "entrd api\n"},
        {[] { fake::script.null_payload = 1; }, "entrd api\n"},
        {[] { fake::script.exchange_result = 1; }, "entrd api\ngoing to send\n"},
    };
    for (const auto& row : rows) {
        begin_call();
        row.script();
        EXPECT_EQ(printed_by([] { vor_cfg_set_mqtt_server_config("up"_t, 1, "10.0.0.9"_t, 1883, 1, 1); }), row.printed);
    }
}
