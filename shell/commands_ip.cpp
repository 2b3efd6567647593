#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_ip_address>("ip", "set-ip-address", "interface_number ip_address@ subnet_mask@ config_option",
                                    "Gives a network interface its IPv4 address and mask.",
                                    "0 192.168.1.10 255.255.255.0 1"),
    command<vor_cfg_set_ipv6_address>("ip", "set-ipv6-address", "interface_number ip_address config_option",
                                      "Gives a network interface its IPv6 address.", "0 fd00:17::10 1"),
    command<vor_cfg_set_dhcp>("ip", "set-dhcp", "interface_number config_option",
                              "Switches an interface's DHCP client.", "1 1"),
    command<vor_cfg_set_ipv6_dhcp>("ip", "set-ipv6-dhcp", "interface_number config_option",
                                   "Switches an interface's DHCPv6 client.", "1 1"),
    command<vor_cfg_set_interface_security_params>(
        "ip", "set-interface-security-params", "interface_number password* ssid encryption_protocol config_option",
        "Sets the security of a wireless interface.", "2 - \"Tower 17\" 3 1"),
    command<vor_cfg_set_access_point_params>(
        "ip", "set-access-point-params", "intr_num passwd* ssid protocol country_code config_option",
        "Sets up the gateway's own Wi-Fi access point.", "2 - \"Tower 17 service\" 3 91 1"),
    local<vor_cfg_get_ip_address>("ip", "get-ip-address", "interface_number- ip_address> subnet_mask>", "Does nothing.",
                                  "0", does_nothing),
    local<vor_cfg_get_interface_security_params>("ip", "get-interface-security-params",
                                                 "interface_number- password> ssid> encryption_protocol>",
                                                 "Does nothing.", "2", does_nothing),
    command<vor_cfg_set_dhcp_server_address_range>(
        "ip", "set-dhcp-server-address-range", "pool_name lo_addr@ hi_addr@ addr_range config_option",
        "Sets the range of addresses a DHCP pool hands out.", "lan 192.168.1.100 192.168.1.150 51 1"),
    local<vor_cfg_get_dhcp_server_address_range>("ip", "get-dhcp-server-address-range", "pool_name- lo_addr> hi_addr>",
                                                 "Does nothing.", "lan", does_nothing),
    command<vor_cfg_set_dhcp_server_dns>("ip", "set-dhcp-server-dns",
                                         "pool_name dns_server_num# config_option dns_server@...",
                                         "Sets the DNS servers a DHCP pool announces.", "lan 1 192.168.1.1 9.9.9.9"),
    command<vor_cfg_set_dhcp_server_pool_name>("ip", "set-dhcp-server-pool-name", "pool_name config_option",
                                               "Creates, changes or removes a DHCP pool by its name.", "lan 1"),
    command<vor_cfg_set_dhcp_server_interface>("ip", "set-dhcp-server-interface",
                                               "pool_name interface_number config_option",
                                               "Sets the interface a DHCP pool serves.", "lan 0 1"),
    command<vor_cfg_set_dhcp_server_subnet>("ip", "set-dhcp-server-subnet", "pool_name subnet_mask@ config_option",
                                            "Sets a DHCP pool's subnet mask.", "lan 255.255.255.0 1"),
    command<vor_cfg_set_dhcp_server_def_router>("ip", "set-dhcp-server-def-router",
                                                "pool_name def_router@ config_option",
                                                "Sets the default router a DHCP pool announces.", "lan 192.168.1.1 1"),
    command<vor_cfg_set_dhcp_server_domain_name>(
        "ip", "set-dhcp-server-domain-name", "pool_name domain_name config_option",
        "Sets the domain name a DHCP pool announces.", "lan tower17.example 1"),
    command<vor_cfg_set_dhcp_server_lease_time>("ip", "set-dhcp-server-lease-time",
                                                "pool_name lease_time config_option",
                                                "Sets how long a DHCP pool's leases last.", "lan 86400 1"),
    command<vor_cfg_set_dhcp_server_dns_client>("ip", "set-dhcp-server-dns-client",
                                                "def_search_domain intr_num:16 dns_server_num# dns_server@...",
                                                "Sets the gateway's own resolver.", "tower17.example 0 192.168.1.1"),
    command<vor_cfg_set_default_gateway>("ip", "set-default-gateway", "def_gateway@ iface_num:16 config_option",
                                         "Sets an interface's default gateway.", "192.168.1.1 0 1"),
    command<vor_cfg_show_route_status>("ip", "show-route-status", "iface_num:8",
                                       "Asks the manager to show an interface's route status.", "0"),
    command<vor_cfg_enable_ip_routing>("ip", "enable-ip-routing", "enable_status:16", "Switches IP forwarding.", "0"),
    command<vor_cfg_set_via_route>("ip", "set-via-route", "ip_address@ via_address-",
                                   "Adds a route through another host.", "10.20.0.0 192.168.1.2"),
    command<vor_cfg_set_static_route>("ip", "set-static-route", "ip_address@ interface_number:16",
                                      "Adds a route through an interface.", "10.30.0.0 1"),
    command<vor_cfg_remove_ip_route>("ip", "remove-ip-route", "ip_address@", "Removes the routes to an address.",
                                     "10.30.0.0"),
};

std::span<const Row> ip_rows()
{
    return rows;
}

} // namespace vorcfg
