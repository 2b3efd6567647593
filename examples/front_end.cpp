// front_end.cpp: a front end in C++20. It does the same as front_end.c.
//
//   c++ -std=c++20 front_end.cpp $(pkg-config --cflags --libs device_mgmt) -o front_end
#include <cstdio>
#include <device_mgmt.hpp>
#include <string>

using device_mgmt::call;

static void report(const char* what, const device_mgmt::Result& result)
{
    static const char* const names[] = {"accepted", "sent", "refused", "not sent", "unknown"};
    std::printf("%s: %s", what, names[static_cast<int>(result.outcome)]); // to_string(result) is a whole sentence
    if (result.status != 0) {
        std::printf(", status %d", result.status);
    }
    std::puts("");
}

int main()
{
    report("before the endpoint", call<vor_cfg_set_gpio_direction>(3, 1, 0));
    const device_mgmt::Endpoint endpoint(200);
    if (!endpoint) {
        return 1;
    }
    const std::string mask = "255.255.255.0";
    report("address", call<vor_cfg_set_ip_address>(0, "192.168.1.10", mask, 1));
    report("direction", call<vor_cfg_set_gpio_direction>(3, 1, 0));
    report("output", call<vor_cfg_set_gpio_value>(3, 1));
    report("parity", call<vor_cfg_set_serial_parity>(1, 2));
    report("credential", call<vor_cfg_set_snmp_server_v3_credentials>("monsoon", 1, 1));
    report("servers", call<vor_cfg_set_dhcp_server_dns>("shelter", 2, 1, "192.168.1.1", "9.9.9.9"));
    report("too wide", call<vor_cfg_set_ip_address>(300, "192.168.1.10", mask, 1));

    vor_int16 temperature = 0;
    report("temperature", call<vor_cfg_get_system_temperature>(&temperature));
    std::printf("temperature: %d\n", temperature);
    const auto statistics = call<vor_cfg_get_gpio_port_stats>(3);
    report("statistics", statistics);
    std::printf("statistics: port %d\n", statistics.value ? statistics.value->logical_port_no : -1);

    device_mgmt::Query query(1);
    query.add<vor_cfg_proto_set_line_string>("hostname", "tower-17")
        .add<vor_cfg_proto_set_pattern_string>(2, "hostname", "")
        .add<vor_cfg_proto_append_path_elm>("interface", "wlan0");
    std::printf("konfd: %s\n", query.command().value_or("incomplete").c_str());
    report("konfd", query.send());
}
