#include "tables/families.hpp"

namespace vorsim::families {
namespace {

constexpr std::string_view option = "config_option";
constexpr std::string_view interface = "interface {interface_number}";
constexpr std::string_view pool = "pool {pool_name}";
constexpr std::string_view route = "route {ip_address}";

// The first interface has a message of its own.
constexpr Layout address_record(std::int32_t number)
{
    return record(12, byte(0, "interface_number").holding(number), byte(1, option), address(4, "ip_address"),
                  address(8, "subnet_mask"));
}
constexpr Layout client_record = record(2, byte(0, "interface_number"), byte(1, option));

constexpr Field interface_number = uint16(1, "interface_number");
constexpr Field pool_name = text(9, "pool_name");
constexpr Field dns_server_num = int16(11, "dns_server_num");
constexpr Field dns_servers = address(12, "dns_server").repeats("dns_server_num");

constexpr Layout access_point = option_and_chain(option, uint16(1, "intr_num"), text(2, "ssid"), uint16(3, "protocol"),
                                                 text(4, "passwd").secret(), uint16(20, "country_code"));

constexpr MessageRow rows[] = {
    {request(0x7003), "vor_cfg_set_ip_address", interface, address_record(0), "address"},
    {request(0x7005), "vor_cfg_set_ip_address", interface, address_record(1), "address"},
    {request(0x7005), "vor_cfg_set_ip_address", interface, address_record(2), "address"},
    {request(0x7018), "vor_cfg_set_ipv6_address", interface,
     option_and_chain(option, interface_number, text(22, "ip_address")), "ipv6 address"},
    {request(0x7007), "vor_cfg_set_dhcp", interface, client_record, "address"},
    {request(0x7019), "vor_cfg_set_ipv6_dhcp", interface, client_record, "ipv6 address"},
    {request(0x7006), "vor_cfg_set_interface_security_params", interface,
     option_and_chain(option, interface_number, text(2, "ssid"), uint16(3, "encryption_protocol"),
                      text(4, "password").secret())},
    // Once accepted, the same message is sent again as a notice.
    {request(0x7014), "vor_cfg_set_access_point_params", "interface {intr_num}", access_point},
    {one_way(2).to("system"), "vor_cfg_set_access_point_params", "interface {intr_num}", access_point},

    {request(0x7009), "vor_cfg_set_dhcp_server_address_range", pool,
     option_and_chain(option, pool_name, address(7, "lo_addr"), address(8, "hi_addr"), int32(17, "addr_range"))},
    {request(0x700b), "vor_cfg_set_dhcp_server_dns", pool,
     option_and_chain(option, pool_name, dns_server_num, dns_servers)},
    {request(0x7017), "vor_cfg_set_dhcp_server_pool_name", pool, option_and_chain(option, pool_name)},
    {request(0x7015), "vor_cfg_set_dhcp_server_interface", pool, option_and_chain(option, pool_name, interface_number)},
    {request(0x700c), "vor_cfg_set_dhcp_server_subnet", pool,
     option_and_chain(option, pool_name, address(13, "subnet_mask"))},
    {request(0x7016), "vor_cfg_set_dhcp_server_def_router", pool,
     option_and_chain(option, pool_name, address(15, "def_router"))},
    {request(0x700a), "vor_cfg_set_dhcp_server_domain_name", pool,
     option_and_chain(option, pool_name, text(10, "domain_name"))},
    {request(0x7008), "vor_cfg_set_dhcp_server_lease_time", pool,
     option_and_chain(option, pool_name, int32(14, "lease_time"))},
    {one_way(0x700d), "vor_cfg_set_dhcp_server_dns_client", "interface {intr_num}",
     chain(text(21, "def_search_domain"), uint16(1, "intr_num"), dns_server_num, dns_servers)},

    {request(0x7010), "vor_cfg_set_default_gateway", "interface {iface_num}",
     record(8, byte(0, option), uint16(2, "iface_num"), address(4, "def_gateway"))},
    {request(0x700e), "vor_cfg_show_route_status", "interface {iface_num}", record(1, byte(0, "iface_num"))},
    {one_way(0x700f), "vor_cfg_enable_ip_routing", "routing", record(4, int32(0, "enable_status"))},
    // Only the destination arrives: the length stops before the via address.
    {one_way(0x7012), "vor_cfg_set_via_route", route, record(4, address(0, "ip_address")), "route"},
    {one_way(0x7011), "vor_cfg_set_static_route", route,
     record(8, uint16(0, "interface_number"), address(4, "ip_address")), "route"},
    // The device number is never set by the sender and is not read here.
    {one_way(0x7013), "vor_cfg_remove_ip_route", route, record(8, address(4, "ip_address")), "route"},
};

} // namespace

extern const Family ip{"ethmgr", rows};

} // namespace vorsim::families
