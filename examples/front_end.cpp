// front_end.cpp: a front end in C++20. It does what front_end.c does.
//
//   c++ -std=c++20 front_end.cpp $(pkg-config --cflags --libs device_mgmt) -o front_end
#include <cstdio>
#include <device_mgmt.hpp>
#include <string>

using device_mgmt::call;
using device_mgmt::Outcome;

static void tell(const char* what, const device_mgmt::Result& result)
{
    static const char* const words[] = {"accepted", "sent", "refused", "not sent", "undelivered", "unreadable"};
    std::printf("%s: %s", what, words[static_cast<int>(result.outcome)]);
    if (result.status != 0) {
        std::printf(", status %d", result.status);
    }
    std::puts("");
}

int main()
{
    tell("before the endpoint", call<vor_cfg_set_gpio_direction>(3, 1, 0));
    const device_mgmt::Endpoint endpoint(200);
    if (!endpoint) {
        return 1;
    }
    const std::string mask = "255.255.255.0";
    tell("address", call<vor_cfg_set_ip_address>(0, "192.168.1.10", mask, 1));
    tell("direction", call<vor_cfg_set_gpio_direction>(3, 1, 0));
    tell("output", call<vor_cfg_set_gpio_value>(3, 1));
    tell("parity", call<vor_cfg_set_serial_parity>(1, 2));
    tell("credential", call<vor_cfg_set_snmp_server_v3_credentials>("monsoon", 1, 7));
    tell("servers", call<vor_cfg_set_dhcp_server_dns>("shelter", 2, 1, "192.168.1.1", "9.9.9.9"));
    tell("too wide", call<vor_cfg_set_ip_address>(300, "192.168.1.10", mask, 1));

    vor_int16 temperature = 0;
    tell("temperature", call<vor_cfg_get_system_temperature>(&temperature));
    std::printf("temperature: %d\n", temperature);
    const auto statistics = call<vor_cfg_get_gpio_port_stats>(3);
    tell("statistics", statistics);
    std::printf("statistics: port %d\n", statistics.value ? statistics.value->logical_port_no : -1);

    device_mgmt::Query query(1);
    query.add<vor_cfg_proto_set_line_string>("hostname", "tower-17")
        .add<vor_cfg_proto_set_pattern_string>(2, "hostname", "")
        .add<vor_cfg_proto_append_path_elm>("interface", "wlan0");
    std::printf("konfd: %s\n", query.command().value_or("not whole").c_str());
    tell("konfd", query.send());
}
