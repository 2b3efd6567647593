#include <device_mgmt/ip.h>

#include "calls.hpp"

CALLS(ip) = {
    // set_ip_address alone reads its texts as inet_aton does.
    CALL(vor_cfg_set_ip_address(0, "192.168.1.10"_t, "255.255.255.0"_t, 200),
         "sap 7 id 0x7003 record 12: 00 c8 a5 a5 c0 a8 01 0a ff ff ff 00", record_errno_cleared),
    CALL(vor_cfg_set_ip_address(1, "10.1"_t, "255.0.0.0"_t, 1),
         "sap 7 id 0x7005 record 12: 01 01 a5 a5 0a 00 00 01 ff 00 00 00", record_errno_cleared),
    CALL(vor_cfg_set_ip_address(2, "1.2.3.4xyz"_t, "mask"_t, 1), "sap 7 id 0x7005 record 12: 02 01 a5 a5 00*8",
         record_errno_cleared),
    SENDS(vor_cfg_set_ip_address(0, nullptr, nullptr, 1), "sap 7 id 0x7003 record 12: 00 01 a5 a5 00*8"),
    CALL(vor_cfg_set_ip_address(3, "10.0.0.1"_t, "255.0.0.0"_t, 1), "nothing", record_unsent),
    CALL(vor_cfg_set_ip_address(255, "10.0.0.1"_t, "255.0.0.0"_t, 1), "nothing", record_unsent),
    CALL(vor_cfg_set_ipv6_address(65535, "fe80::1"_t, '\xc8'),
         "sap 7 id 0x7018 option 0xc8 | 1 i16 -1 | 22 str 'fe80::1'", option),
    CALL(vor_cfg_set_dhcp(200, 7), "sap 7 id 0x7007 record 2: c8 07", record),
    CALL(vor_cfg_set_ipv6_dhcp(201, 8), "sap 7 id 0x7019 record 2: c9 08", record),
    CALL(vor_cfg_set_interface_security_params(200, "secret"_t, "site"_t, 65535, 9),
         "sap 7 id 0x7006 option 0x09 | 1 i16 200 | 2 str 'site' | 3 i16 -1 | 4 str 'secret'", option),
    CALL(vor_cfg_set_access_point_params(65535, "secret"_t, "site"_t, 40000, 356, 9),
         "sap 7 id 0x7014 option 0x09 | 1 i16 -1 | 2 str 'site' | 3 i16 -25536 | 4 str 'secret' | 20 i16 356; "
         "sap 0 id 0x2 one-way option 0x09 | 1 i16 -1 | 2 str 'site' | 3 i16 -25536 | 4 str 'secret' | 20 i16 356",
         option_then_notice),
    CALL(vor_cfg_get_ip_address(1, nullptr, nullptr), "nothing", nothing),
    CALL(vor_cfg_get_interface_security_params(1, nullptr, nullptr, nullptr), "nothing", nothing),

    // 10.0.0.1 is 16777226 and 9.1.0.0 is 265 in a little-endian gateway's 32 bits.
    CALL(vor_cfg_set_dhcp_server_address_range("lan"_t, "10.0.0.1"_t, "9.1.0.0"_t, 70000, 0x0207),
         "sap 7 id 0x7009 option 0x07 | 9 str 'lan' | 7 i32 16777226 | 8 i32 265 | 17 i32 70000", option_errno_cleared),
    SENDS(vor_cfg_set_dhcp_server_address_range("lan"_t, "256.0.0.1"_t, "9.1.0"_t, -3, -1),
          "sap 7 id 0x7009 option 0xff | 9 str 'lan' | 7 i32 0 | 8 i32 0 | 17 i32 -3"),
    CALL(vor_cfg_get_dhcp_server_address_range(nullptr, nullptr, nullptr), "nothing", nothing),
    CALL(
        vor_cfg_set_dhcp_server_dns("lan"_t, 4, 7, "10.0.0.1"_t, "9.1.0.0"_t, "x"_t, "0.0.1.0"_t),
        "sap 7 id 0x700b option 0x07 | 9 str 'lan' | 11 i16 4 | 12 i32 16777226 | 12 i32 265 | 12 i32 0 | 12 i32 65536",
        option),
    SENDS(vor_cfg_set_dhcp_server_dns("lan"_t, 0, 7), "sap 7 id 0x700b option 0x07 | 9 str 'lan' | 11 i16 0"),
    SENDS(vor_cfg_set_dhcp_server_dns("lan"_t, -3, 7), "sap 7 id 0x700b option 0x07 | 9 str 'lan' | 11 i16 -3"),
    CALL(vor_cfg_set_dhcp_server_dns("lan"_t, 5, 7, ""_t, ""_t, ""_t, ""_t, ""_t), "nothing", too_many_servers),
    CALL(vor_cfg_set_dhcp_server_pool_name("lan"_t, 7), "sap 7 id 0x7017 option 0x07 | 9 str 'lan'", option),
    CALL(vor_cfg_set_dhcp_server_interface("lan"_t, 65535, 7), "sap 7 id 0x7015 option 0x07 | 9 str 'lan' | 1 i16 -1",
         option),
    CALL(vor_cfg_set_dhcp_server_subnet("lan"_t, "9.1.0.0"_t, 7),
         "sap 7 id 0x700c option 0x07 | 9 str 'lan' | 13 i32 265", option),
    SENDS(vor_cfg_set_dhcp_server_subnet("lan"_t, "/24"_t, 7), "sap 7 id 0x700c option 0x07 | 9 str 'lan' | 13 i32 0"),
    CALL(vor_cfg_set_dhcp_server_def_router("lan"_t, "10.0.0.1"_t, 7),
         "sap 7 id 0x7016 option 0x07 | 9 str 'lan' | 15 i32 16777226", option),
    CALL(vor_cfg_set_dhcp_server_domain_name("lan"_t, "site.example"_t, 7),
         "sap 7 id 0x700a option 0x07 | 9 str 'lan' | 10 str 'site.example'", option),
    CALL(vor_cfg_set_dhcp_server_lease_time("lan"_t, 70000, 7),
         "sap 7 id 0x7008 option 0x07 | 9 str 'lan' | 14 i32 70000", option),
    CALL(vor_cfg_set_dhcp_server_dns_client("site.example"_t, "200"_t, 2, "10.0.0.1"_t, "9.1.0.0"_t),
         "sap 7 id 0x700d one-way | 21 str 'site.example' | 1 i16 200 | 11 i16 2 | 12 i32 16777226 | 12 i32 265",
         sent_chain),
    SENDS(vor_cfg_set_dhcp_server_dns_client("site.example"_t, "70000"_t, 0),
          "sap 7 id 0x700d one-way | 21 str 'site.example' | 1 i16 4464 | 11 i16 0"),
    SENDS(vor_cfg_set_dhcp_server_dns_client("site.example"_t, "eth0"_t, 4, "x"_t, "x"_t, "x"_t, "9.1.0.0"_t),
          "sap 7 id 0x700d one-way | 21 str 'site.example' | 1 i16 0 | 11 i16 4 | 12 i32 0 | 12 i32 0 | 12 i32 0 | 12 "
          "i32 265"),
    CALL(vor_cfg_set_dhcp_server_dns_client(""_t, "1"_t, 5), "nothing", too_many_servers),

    CALL(vor_cfg_set_default_gateway("192.168.1.1"_t, "70000"_t, 7),
         "sap 7 id 0x7010 record 8: 07 a5 70 11 c0 a8 01 01", record_errno_cleared),
    SENDS(vor_cfg_set_default_gateway("router"_t, "2"_t, 7), "sap 7 id 0x7010 record 8: 07 a5 02 00*5"),
    SENDS(vor_cfg_set_default_gateway(nullptr, nullptr, 7), "sap 7 id 0x7010 record 8: 07 a5 00*6"),
    CALL(vor_cfg_show_route_status("300"_t), "sap 7 id 0x700e record 1: 2c", record),
    SENDS(vor_cfg_show_route_status(nullptr), "sap 7 id 0x700e record 1: 00"),
    CALL(vor_cfg_enable_ip_routing("1"_t), "sap 7 id 0x700f one-way record 4: 01 00 00 00", sent_record),
    SENDS(vor_cfg_enable_ip_routing("0"_t), "sap 7 id 0x700f one-way record 4: 00*4"),
    SENDS(vor_cfg_enable_ip_routing("-1"_t), "sap 7 id 0x700f one-way record 4: ff ff 00 00"),
    CALL(vor_cfg_set_via_route("10.0.0.1"_t, "192.168.1.2"_t),
         "sap 7 id 0x7012 one-way record 4: 0a 00 00 01 behind: c0 a8 01 02", sent_record),
    CALL(vor_cfg_set_static_route("10.0.0.1"_t, "70000"_t), "sap 7 id 0x7011 one-way record 8: 70 11 a5 a5 0a 00 00 01",
         sent_record),
    SENDS(vor_cfg_set_static_route("x"_t, "-1"_t), "sap 7 id 0x7011 one-way record 8: ff ff a5 a5 00*4"),
    CALL(vor_cfg_remove_ip_route("10.0.0.1"_t), "sap 7 id 0x7013 one-way record 8: a5*4 0a 00 00 01", sent_record),
};

TEST(ip, address_is_answered_under_either_id)
{
    begin_call();
    fake::script.answer_id = 0x7005;
    EXPECT_EQ(outcome(vor_cfg_set_ip_address(0, "10.0.0.1"_t, "255.0.0.0"_t, 1)), "0:eQP0xaqp");
    begin_call();
    fake::script.answer_id = 0x7003;
    EXPECT_EQ(outcome(vor_cfg_set_ip_address(1, "10.0.0.1"_t, "255.0.0.0"_t, 1)), "0:eQP0xaqp");
}
