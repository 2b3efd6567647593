// device_mgmt.hpp: the arguments it accepts and the outcomes it reports. The codes as sentences.
#include <device_mgmt.hpp>
#include <device_mgmt/code_text.h>
#include <gtest/gtest.h>
#include <set>

#include "fake_vorinfra/fake_vorinfra.hpp"

namespace {

bool nobody_listens = false;

} // namespace

extern "C" unsigned vorinfra_messages_undelivered()
{
    static unsigned count = 0;
    return count += nobody_listens ? 1U : 0U;
}

namespace {

using device_mgmt::call;
using device_mgmt::Outcome;

template <auto* Function>
constexpr bool takes(auto... arguments)
{
    return requires
    {
        call<Function>(arguments...);
    };
}
static_assert(takes<vor_cfg_set_gpio_direction>(3, 1, 0));
static_assert(!takes<vor_cfg_set_gpio_direction>(3.5, 1, 0), "a fraction narrows");
static_assert(!takes<vor_cfg_set_gpio_direction>(3LL, 1, 0), "64 bits narrow");
static_assert(!takes<vor_cfg_set_gpio_direction>(3, 1), "an argument is missing");
static_assert(!takes<vor_cfg_set_plat_hostname>(5), "a number is not a text");
static_assert(!takes<vor_cfg_set_plat_hostname>(nullptr), "a null text");

std::string text_of(const device_mgmt::Result& result)
{
    static constexpr const char* words[] = {"accepted", "sent", "refused", "not sent", "unknown"};
    return fake::text_of(words[static_cast<int>(result.outcome)], " ", result.code, " ", result.status, " ",
                         result.misfit);
}

void begin(bool endpoint = true)
{
    fake::reset();
    fake::script = {};
    vor_cfg_set_ipc_endpoint(endpoint ? fake::handle() : nullptr);
    vor_errno = 77; // of a call before
}

TEST(cpp_front_end, outcome_per_return_code)
{
    begin(false);
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp>(0, 1)), "not sent -1 0 0");
    begin();
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp>(0, 1)), "accepted 0 0 0");
    fake::script.answer = {5, 0, 0, 0};
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp>(0, 1)), "refused -1 5 0");
    EXPECT_EQ(text_of(call<vor_cfg_set_gw_device_latitude_config>(1, "12.4N")), "unknown -1001 0 0")
        << "whatever the answer was, if it is not status 1";
    fake::script.answer = {5, 0, 0xa5, 0xa5};
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp>(0, 1)), "unknown -1 0 0") << "a part of a status";
    EXPECT_EQ(text_of(call<vor_cfg_set_serial_parity>(1, 2)), "unknown -4 0 0");
    EXPECT_EQ(text_of(call<vor_cfg_set_gpio_value>(1, 2)), "sent 0 0 0");
    begin();
    fake::script.exchange_result = fake::script.send_result = -9;
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp>(0, 1)), "unknown -3 0 0");
    EXPECT_EQ(text_of(call<vor_cfg_set_snmp_server_enable>(1)), "unknown -9 0 0");
    begin();
    fake::script.failing_buffer = 1;
    EXPECT_EQ(text_of(call<vor_cfg_set_gpio_value>(1, 2)), "unknown -4 0 0");
    begin();
    EXPECT_EQ(text_of(call<vor_cfg_set_debug_info>(1, "all", "info")), "unknown 0 0 0") << "perhaps it was not sent";
    nobody_listens = true;
    EXPECT_EQ(text_of(call<vor_cfg_set_gpio_value>(1, 2)), "unknown 0 0 0") << "lost";
    nobody_listens = false;
}

TEST(cpp_front_end, misfits_are_not_sent)
{
    begin();
    EXPECT_EQ(text_of(call<vor_cfg_set_ip_address>(256, "10.0.0.1", "255.0.0.0", 1)), "not sent 0 0 1");
    EXPECT_EQ(text_of(call<vor_cfg_set_gpio_direction>(1, 40000, 0)), "not sent 0 0 2");
    EXPECT_EQ(text_of(call<vor_cfg_set_can_id>(1, -1, 0)), "not sent 0 0 2");
    EXPECT_EQ(text_of(call<vor_cfg_set_plat_hostname>(std::string_view("a\0b", 3))), "not sent 0 0 1");
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp_server_dns>("p", 3, 1, "9.9.9.9")), "not sent 0 0 2") << "counted wrong";
    EXPECT_EQ(text_of(call<vor_cfg_set_service_chain>(1, "c", 1, "a", "b")), "not sent 0 0 3");
    EXPECT_EQ(text_of(call<vor_cfg_get_system_temperature>(static_cast<vor_int16*>(nullptr))), "not sent 0 0 1");
    EXPECT_EQ(text_of(call<vor_cfg_set_debug_info>(1, "all", "loud")), "not sent 0 0 3") << "an unknown level";
    EXPECT_EQ(text_of(call<vor_cfg_set_ip_address>(0, "192.168.1.999", "255.0.0.0", 1)), "not sent 0 0 2");
    EXPECT_EQ(text_of(call<vor_cfg_enable_ip_routing>("yes")), "not sent 0 0 1");
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp_server_dns>("p", 2, 1, "9.9.9.9", "9.9.9")), "not sent 0 0 5");
    EXPECT_EQ(text_of(call<vor_cfg_set_wifi_ssid_password>("a\"b", "secret")), "not sent 0 0 1");
    EXPECT_EQ(text_of(call<vor_cfg_set_ip_address>(3, "10.0.0.1", "255.0.0.0", 1)), "not sent 0 0 1");
    EXPECT_EQ(device_mgmt::Query(257).command(), std::nullopt);
    EXPECT_FALSE(device_mgmt::Endpoint(65736));
    EXPECT_FALSE(device_mgmt::Endpoint(201)) << "there is one already";
    EXPECT_NE(vor_cfg_get_ipc_endpoint(), nullptr) << "which stays";
    EXPECT_EQ(fake::events(), "nothing");
    EXPECT_EQ(text_of(call<vor_cfg_set_dhcp>(0, 200)), "accepted 0 0 0") << "a byte, whatever char's sign";
}

TEST(cpp_front_end, text_types_send_the_same)
{
    begin();
    const std::string text = "tower-17 north";
    call<vor_cfg_set_plat_hostname>(text);
    const std::string sent = fake::events();
    for (int kind = 0; kind < 2; ++kind) {
        begin();
        kind == 0 ? call<vor_cfg_set_plat_hostname>("tower-17 north")
                  : call<vor_cfg_set_plat_hostname>(std::string_view(text + "erly").substr(0, text.size()));
        EXPECT_EQ(fake::events(), sent);
    }
}

TEST(cpp_front_end, reading_is_copied_and_query_frees_memory)
{
    begin();
    fake::script.answer = std::vector<vor_uchar>(sizeof(GPIO_PIN_STATS), 7);
    fake::script.dropped_buffers_stay = true;
    const auto reading = call<vor_cfg_get_gpio_port_stats>(3);
    ASSERT_TRUE(reading && reading.value);
    EXPECT_EQ(reading.value->logical_port_no, 0x0707);

    begin();
    {
        device_mgmt::Query query(1);
        query.add<vor_cfg_proto_set_line_string>("hostname", "tower-17")
            .add<vor_cfg_proto_set_pattern_string>(2, "hostname", "")
            .add<vor_cfg_proto_append_path_elm>("interface", "wlan0")
            .add<vor_cfg_proto_append_path_elm>("port", "1");
        EXPECT_EQ(query.command(), R"(-s -l "hostname tower-17" -r "^hostname$" "interface wlan0" "port 1")");
        fake::script.replies = {"-o\n"};
        EXPECT_EQ(text_of(query.send()), "accepted 0 0 0");
    }
    EXPECT_EQ(fake::live_allocations(), 0);
}

TEST(code_text, each_outcome_has_its_own)
{
    std::set<std::string_view> texts{device_mgmt_code_text(VOR_CODE_REFUSED, 5)};
    for (const vor_int32 code :
         {VOR_CODE_DONE, VOR_CODE_REFUSED, VOR_CODE_UNDELIVERED, VOR_CODE_UNREADABLE, VOR_CODE_LATITUDE,
          VOR_CODE_LONGITUDE, VOR_CODE_TOO_MANY_SERVERS, VOR_CODE_MAC_ADDRESS, static_cast<vor_code>(-9)}) {
        const std::string_view text = device_mgmt_code_text(code, 0);
        EXPECT_TRUE(texts.insert(text).second) << text;
        const bool perhaps = code >= VOR_CODE_UNREADABLE && code < VOR_CODE_DONE; // one code has several meanings
        EXPECT_EQ(text.ends_with("may have been applied"), perhaps) << text;
    }
}

} // namespace
