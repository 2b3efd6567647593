#include <device_mgmt/ip.h>

#include "rows/family.hpp"
#include "rows/rule.hpp"

namespace vorcfg::rows {

namespace {

constexpr Choice routing[] = {{"enable", 0}, {"disable", 1}};

constexpr RecordField address[] = {FIELD(VOR_ETH_CONFIG_IP, eth_int_number), FIELD(VOR_ETH_CONFIG_IP, eth_conf_option),
                                   FIELD(VOR_ETH_CONFIG_IP, ip_address), FIELD(VOR_ETH_CONFIG_IP, subnet_mask)};
constexpr RecordField dhcp_client[] = {FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_int_number),
                                       FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_conf_option)};
constexpr RecordField gateway[] = {FIELD(VOR_ETH_DEFAULT_GW_CONFIG, gw_conf_option),
                                   FIELD(VOR_ETH_DEFAULT_GW_CONFIG, iface_num),
                                   FIELD(VOR_ETH_DEFAULT_GW_CONFIG, default_gw)};
constexpr RecordField interface[] = {FIELD(VOR_INTERFACE, interface_num)};
constexpr RecordField route_switch[] = {record_field<vor_uint32>("enable_status", 0).as(RecordField::Kind::number)};
constexpr RecordField route_via[] = {FIELD(VOR_ETH_ROUTE_VIA, ip_address)};
constexpr RecordField static_route[] = {FIELD(VOR_ETH_STATIC_ROUTE, device_no),
                                        FIELD(VOR_ETH_STATIC_ROUTE, ip_address)};
constexpr RecordField removed_route[] = {FIELD(VOR_ETH_STATIC_ROUTE, ip_address)};

// The line that gives the interface a fixed address.
const SiteLine* address_of(const std::string& number, const SiteLine& line, const SiteLines& site)
{
    return site.find(line.row->family, "set-ip-address", number);
}

std::string in_line(const SiteLine& other)
{
    return " (line " + std::to_string(other.number) + ")";
}

// About an address that belongs into the subnet of a line that gives an interface its address.
Finding outside_subnet(std::string_view what, std::optional<std::uint32_t> belongs, const SiteLine* served)
{
    if (served == nullptr || !belongs) {
        return {};
    }
    const auto own = served->address("ip_address");
    const auto mask = served->address("subnet_mask");
    if (!own || !mask || ((*own ^ *belongs) & *mask) == 0) {
        return {};
    }
    return {std::string(what) + " is not in the subnet of interface " + served->text("interface_number") +
                in_line(*served),
            served->number};
}

Finding runs_backwards(const SiteLine& line, const SiteLines&)
{
    return line.address("lo_addr") > line.address("hi_addr")
               ? Finding{"the range runs backwards, from " + line.text("lo_addr") + " to " + line.text("hi_addr")}
               : Finding{};
}

Finding crosses_subnet(const SiteLine& line, const SiteLines& site)
{
    const SiteLine* const subnet = site.find(line.row->family, "set-dhcp-server-subnet", line.text("pool_name"));
    const auto mask = subnet != nullptr ? subnet->address("subnet_mask") : std::nullopt;
    if (!mask || ((*line.address("lo_addr") ^ *line.address("hi_addr")) & *mask) == 0) {
        return {};
    }
    return {"the range is larger than the pool's subnet, " + subnet->text("subnet_mask") + in_line(*subnet),
            subnet->number};
}

Finding leaves_interface(const SiteLine& line, const SiteLines& site)
{
    const SiteLine* const served = site.find(line.row->family, "set-dhcp-server-interface", line.text("pool_name"));
    return served != nullptr ? outside_subnet("lo_addr " + line.text("lo_addr"), line.address("lo_addr"),
                                              address_of(served->text("interface_number"), line, site))
                             : Finding{};
}

Finding gateway_is_not_reached(const SiteLine& line, const SiteLines& site)
{
    return outside_subnet("def_gateway " + line.text("def_gateway"), line.address("def_gateway"),
                          address_of(line.text("iface_num"), line, site));
}

Finding has_fixed_address(const SiteLine& line, const SiteLines& site)
{
    const SiteLine* const fixed = address_of(line.text("interface_number"), line, site);
    return fixed != nullptr && line.text("config_option") != "0"
               ? Finding{"the interface has a fixed address" + in_line(*fixed), fixed->number}
               : Finding{};
}

constexpr Rule range_rules[] = {runs_backwards, crosses_subnet, leaves_interface};
constexpr Rule gateway_rules[] = {gateway_is_not_reached};
constexpr Rule dhcp_rules[] = {has_fixed_address};

} // namespace

FAMILY(
    ip,
    call<vor_cfg_set_ip_address>("set-ip-address",
                                 {number("interface_number").between(0, 2).object(), ipv4("ip_address"),
                                  netmask("subnet_mask"), "config_option"},
                                 "0 192.168.1.10 255.255.255.0 1")
        .sends(address)
        .changes("address")
        .marked(cuts_link),
    call<vor_cfg_set_ipv6_address>("set-ipv6-address", {object("interface_number"), "ip_address", "config_option"},
                                   "0 fd00:17::10 1")
        .changes("ipv6-address")
        .marked(cuts_link),
    call<vor_cfg_set_dhcp>("set-dhcp", {object("interface_number"), "config_option"}, "1 1")
        .sends(dhcp_client)
        .changes("address")
        .warns(dhcp_rules)
        .marked(cuts_link),
    call<vor_cfg_set_ipv6_dhcp>("set-ipv6-dhcp", {object("interface_number"), "config_option"}, "1 1")
        .sends(dhcp_client)
        .changes("ipv6-address")
        .marked(cuts_link),
    call<vor_cfg_set_interface_security_params>("set-interface-security-params",
                                                {object("interface_number"), text("password").secret(), "ssid",
                                                 "encryption_protocol", "config_option"},
                                                "2 - \"Tower 17\" 3 1")
        .marked(cuts_link),
    call<vor_cfg_set_access_point_params>("set-access-point-params",
                                          {object("intr_num"), text("passwd").secret(), "ssid", "protocol",
                                           "country_code", "config_option"},
                                          "2 - \"Tower 17 service\" 3 91 1")
        .marked(cuts_link),
    stub<vor_cfg_get_ip_address>("get-ip-address",
                                 {unsent("interface_number"), untouched("ip_address"), untouched("subnet_mask")}, "0"),
    stub<vor_cfg_get_interface_security_params>("get-interface-security-params",
                                                {unsent("interface_number"), untouched("password"), untouched("ssid"),
                                                 untouched("encryption_protocol")},
                                                "2"),
    call<vor_cfg_set_dhcp_server_address_range>("set-dhcp-server-address-range",
                                                {object("pool_name"), ipv4("lo_addr"), ipv4("hi_addr"), "addr_range",
                                                 number("config_option").fits<vor_uchar>()},
                                                "lan 192.168.1.100 192.168.1.150 51 1")
        .warns(range_rules),
    stub<vor_cfg_get_dhcp_server_address_range>("get-dhcp-server-address-range",
                                                {unsent("pool_name"), untouched("lo_addr"), untouched("hi_addr")},
                                                "lan"),
    call<vor_cfg_set_dhcp_server_dns>("set-dhcp-server-dns",
                                      {object("pool_name"), count("dns_server_num"), "config_option",
                                       ipv4("dns_server").list(4)},
                                      "lan 1 192.168.1.1 9.9.9.9"),
    call<vor_cfg_set_dhcp_server_pool_name>("set-dhcp-server-pool-name", {object("pool_name"), "config_option"},
                                            "lan 1"),
    call<vor_cfg_set_dhcp_server_interface>("set-dhcp-server-interface",
                                            {object("pool_name"), "interface_number", "config_option"}, "lan 0 1"),
    call<vor_cfg_set_dhcp_server_subnet>("set-dhcp-server-subnet",
                                         {object("pool_name"), netmask("subnet_mask"), "config_option"},
                                         "lan 255.255.255.0 1"),
    call<vor_cfg_set_dhcp_server_def_router>("set-dhcp-server-def-router",
                                             {object("pool_name"), ipv4("def_router"), "config_option"},
                                             "lan 192.168.1.1 1"),
    call<vor_cfg_set_dhcp_server_domain_name>("set-dhcp-server-domain-name",
                                              {object("pool_name"), "domain_name", "config_option"},
                                              "lan tower17.example 1"),
    call<vor_cfg_set_dhcp_server_lease_time>("set-dhcp-server-lease-time",
                                             {object("pool_name"), "lease_time", "config_option"}, "lan 86400 1"),
    call<vor_cfg_set_dhcp_server_dns_client>("set-dhcp-server-dns-client",
                                             {"def_search_domain", decimal<vor_uint16>("intr_num").object(),
                                              count("dns_server_num"), ipv4("dns_server").list(4)},
                                             "tower17.example 0 192.168.1.1"),
    call<vor_cfg_set_default_gateway>("set-default-gateway",
                                      {ipv4("def_gateway"), decimal<vor_uint16>("iface_num").object(), "config_option"},
                                      "192.168.1.1 0 1")
        .sends(gateway)
        .warns(gateway_rules)
        .marked(cuts_link),
    call<vor_cfg_show_route_status>("show-route-status", {decimal<vor_uchar>("iface_num").object()}, "0")
        .sends(interface)
        .marked(acts),
    call<vor_cfg_enable_ip_routing>("enable-ip-routing", {decimal<vor_uint16>("enable_status").choices_of(routing)},
                                    "0")
        .sends(route_switch)
        .marked(cuts_link),
    call<vor_cfg_set_via_route>("set-via-route", {ipv4("ip_address").object(), unsent("via_address")},
                                "10.20.0.0 192.168.1.2")
        .sends(route_via)
        .changes("route")
        .marked(cuts_link),
    call<vor_cfg_set_static_route>("set-static-route",
                                   {ipv4("ip_address").object(), decimal<vor_uint16>("interface_number")},
                                   "10.30.0.0 1")
        .sends(static_route)
        .changes("route")
        .marked(cuts_link),
    call<vor_cfg_remove_ip_route>("remove-ip-route", {ipv4("ip_address").object()}, "10.30.0.0")
        .sends(removed_route)
        .changes("route")
        .marked(cuts_link))

} // namespace vorcfg::rows
