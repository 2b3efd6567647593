// Interface addressing, access point, DHCP server and routing (ethmgr).
#include <device_mgmt/ip.h>

#include <arpa/inet.h>
#include <cstdlib>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame eth = sap(7) | lone_request_dropped | id_low_half | empty_answer_keeps;
constexpr Frame eth_record = eth | null_payload_keeps;
constexpr Frame eth_option = eth | option_byte | null_payload_drops;
constexpr Frame eth_twice = eth_option | request_dropped_last; // the access point's request may go out again
constexpr Frame route = sap(7) | one_way | null_payload_keeps;

constexpr MessageId first_interface_address = 0x7003;
constexpr MessageId other_interface_address = 0x7005;
constexpr MessageId access_point = 0x7014;
constexpr MessageId access_point_notice = 2; // to SAP 0

constexpr MessageId route_status = 0x700e;
constexpr MessageId ip_routing = 0x700f;

constexpr vor_int16 dns_servers_max = 4;
constexpr vor_int32 too_many_dns_servers = -1151;

[[gnu::noinline]] vor_uint32 network_address(const vor_char* text)
{
    in_addr address{}; // stays 0.0.0.0 for text that is not an address
    if (text != nullptr) {
        inet_aton(text, &address);
    }
    return address.s_addr;
}

} // namespace

vor_int32 vor_cfg_set_ip_address(vor_uchar interface_number, vor_char* ip_address, vor_char* subnet_mask,
                                 vor_uchar config_option)
{
    Exchange exchange;
    vor_int32 code = exchange.prepare<eth_record | clears_errno, first_interface_address, sizeof(VOR_ETH_CONFIG_IP)>();
    if (code != ok) {
        return code;
    }
    auto* const config = reinterpret_cast<VOR_ETH_CONFIG_IP*>(exchange.payload);
    config->eth_int_number = interface_number;
    config->eth_conf_option = config_option;
    config->ip_address = network_address(ip_address);
    config->subnet_mask = network_address(subnet_mask);
    if (interface_number > 2) { // no message for it: ends like an answer without status
        return exchange.finish(nullptr);
    }
    if (interface_number != 0) {
        exchange.id = other_interface_address;
    }
    code = exchange.send_and_receive();
    if (code != ok) {
        return code;
    }
    // Either of the two ids is accepted, whichever was sent.
    exchange.id = other_interface_address;
    if (!exchange.answer_matches()) {
        exchange.id = first_interface_address;
    }
    return exchange.finish();
}

vor_int32 vor_cfg_set_ipv6_address(vor_uint16 interface_number, vor_char* ip_address, vor_char config_option)
{
    return request<eth_option, 0x7018>(option(config_option), int16<1>(interface_number), str<22>(ip_address));
}

vor_int32 vor_cfg_set_dhcp(vor_uchar interface_number, vor_char config_option)
{
    return request<eth_record, 0x7007, sizeof(VOR_ETH_DHCP_CLIENT_CONFIG)>(
        FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_int_number)(interface_number),
        FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_conf_option)(config_option));
}

vor_int32 vor_cfg_set_ipv6_dhcp(vor_uchar interface_number, vor_char config_option)
{
    return request<eth_record, 0x7019, sizeof(VOR_ETH_DHCP_CLIENT_CONFIG)>(
        FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_int_number)(interface_number),
        FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_conf_option)(config_option));
}

vor_int32 vor_cfg_set_interface_security_params(vor_uchar interface_number, vor_char* password, vor_char* ssid,
                                                vor_uint16 encryption_protocol, vor_uchar config_option)
{
    return request<eth_option, 0x7006>(option(config_option), int16<1>(interface_number), str<2>(ssid),
                                       int16<3>(encryption_protocol), str<4>(password));
}

vor_int32 vor_cfg_set_access_point_params(vor_uint16 intr_num, vor_char* passwd, vor_char* ssid, vor_uint16 protocol,
                                          vor_uint16 country_code, vor_char config_option)
{
    Exchange exchange;
    vor_int32 code =
        exchange.prepare<eth_twice, access_point>(option(config_option), int16<1>(intr_num), str<2>(ssid),
                                                  int16<3>(protocol), str<4>(passwd), int16<20>(country_code));
    if (code != ok) {
        return code;
    }
    code = exchange.send_and_receive();
    if (code != ok) {
        return code;
    }
    const void* status = nullptr;
    code = exchange.read_status(status);
    if (code != ok) {
        return code;
    }
    if (!accepted(status)) {
        return exchange.finish(status);
    }
    const vor_int32 sent =
        vor_ipc_send(exchange.handle, 0, access_point_notice.number, &exchange.request, exchange.length, 0);
    exchange.drop_buffers();
    return sent != 0 ? undelivered : ok;
}

vor_int32 vor_cfg_get_ip_address(vor_uchar /*interface_number*/, vor_char* /*ip_address*/, vor_char* /*subnet_mask*/)
{
    return 0;
}

vor_int32 vor_cfg_get_interface_security_params(vor_uchar /*interface_number*/, vor_char* /*password*/,
                                                vor_char* /*ssid*/, vor_uint16* /*encryption_protocol*/)
{
    return 0;
}

vor_int32 vor_cfg_set_dhcp_server_address_range(vor_char* pool_name, vor_char* lo_addr, vor_char* hi_addr,
                                                vor_int32 addr_range, vor_int16 config_option)
{
    return request<eth_option | clears_errno, 0x7009>(option(config_option), str<9>(pool_name), address<7>(lo_addr),
                                                      address<8>(hi_addr), int32<17>(addr_range));
}

vor_int32 vor_cfg_get_dhcp_server_address_range(vor_char* /*pool_name*/, vor_char* /*lo_addr*/, vor_char* /*hi_addr*/)
{
    return 0;
}

// The two DNS calls end in narrow types before the dots: callers' va_start sees
// them promoted, and gcc and clang both find the arguments after them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"

vor_int32 vor_cfg_set_dhcp_server_dns(vor_char* pool_name, vor_int16 dns_server_num, vor_char config_option, ...)
{
    if (dns_server_num > dns_servers_max) {
        return too_many_dns_servers;
    }
    Texts servers{};
    servers.count = dns_server_num;
    va_start(servers.list, config_option);
    const vor_int32 code = request<eth_option, 0x700b>(option(config_option), str<9>(pool_name),
                                                       int16<11>(dns_server_num), addresses<12>(servers));
    va_end(servers.list);
    return code;
}

vor_int32 vor_cfg_set_dhcp_server_dns_client(vor_char* def_search_domain, vor_char* intr_num, vor_int16 dns_server_num,
                                             ...)
{
    if (dns_server_num > dns_servers_max) {
        return too_many_dns_servers;
    }
    Texts servers{};
    servers.count = dns_server_num;
    va_start(servers.list, dns_server_num);
    const vor_int32 code = request<route, 0x700d>(str<21>(def_search_domain), number<1>(intr_num),
                                                  int16<11>(dns_server_num), addresses<12>(servers));
    va_end(servers.list);
    return code;
}

#pragma GCC diagnostic pop

vor_int32 vor_cfg_set_dhcp_server_pool_name(vor_char* pool_name, vor_char config_option)
{
    return request<eth_option, 0x7017>(option(config_option), str<9>(pool_name));
}

vor_int32 vor_cfg_set_dhcp_server_interface(vor_char* pool_name, vor_uint16 interface_number, vor_char config_option)
{
    return request<eth_option, 0x7015>(option(config_option), str<9>(pool_name), int16<1>(interface_number));
}

vor_int32 vor_cfg_set_dhcp_server_subnet(vor_char* pool_name, vor_char* subnet_mask, vor_char config_option)
{
    return request<eth_option, 0x700c>(option(config_option), str<9>(pool_name), address<13>(subnet_mask));
}

vor_int32 vor_cfg_set_dhcp_server_def_router(vor_char* pool_name, vor_char* def_router, vor_char config_option)
{
    return request<eth_option, 0x7016>(option(config_option), str<9>(pool_name), address<15>(def_router));
}

vor_int32 vor_cfg_set_dhcp_server_domain_name(vor_char* pool_name, vor_char* domain_name, vor_char config_option)
{
    return request<eth_option, 0x700a>(option(config_option), str<9>(pool_name), str<10>(domain_name));
}

vor_int32 vor_cfg_set_dhcp_server_lease_time(vor_char* pool_name, vor_int32 lease_time, vor_char config_option)
{
    return request<eth_option, 0x7008>(option(config_option), str<9>(pool_name), int32<14>(lease_time));
}

vor_int32 vor_cfg_set_default_gateway(vor_char* def_gateway, vor_char* iface_num, vor_char config_option)
{
    return request<eth_record | clears_errno, 0x7010, sizeof(VOR_ETH_DEFAULT_GW_CONFIG)>(
        FIELD(VOR_ETH_DEFAULT_GW_CONFIG, gw_conf_option)(config_option),
        NUMBER_FIELD(VOR_ETH_DEFAULT_GW_CONFIG, iface_num)(iface_num),
        ADDRESS_FIELD(VOR_ETH_DEFAULT_GW_CONFIG, default_gw)(def_gateway));
}

vor_int32 vor_cfg_show_route_status(vor_char* iface_num)
{
    Exchange exchange;
    const vor_int32 code = exchange.prepare<eth_record, route_status, sizeof(VOR_INTERFACE)>();
    if (code != ok) {
        return code;
    }
    *exchange.payload = static_cast<vor_uchar>(iface_num == nullptr ? 0 : std::atoi(iface_num));
    return exchange.send_and_finish();
}

vor_int32 vor_cfg_enable_ip_routing(vor_char* enable_status)
{
    Exchange exchange;
    const vor_int32 code = exchange.prepare<route, ip_routing, sizeof(VOR_ETH_ROUTE_EN)>();
    if (code != ok) {
        return code;
    }
    *reinterpret_cast<vor_uint32*>(exchange.payload) = number_in(enable_status);
    return exchange.send();
}

vor_int32 vor_cfg_set_via_route(vor_char* ip_address, vor_char* via_address)
{
    constexpr vor_uchar first_field_only = 4; // the next hop is written but not sent
    return request<route, 0x7012, first_field_only>(ADDRESS_FIELD(VOR_ETH_ROUTE_VIA, ip_address)(ip_address),
                                                    ADDRESS_FIELD(VOR_ETH_ROUTE_VIA, via_ip_address)(via_address));
}

vor_int32 vor_cfg_set_static_route(vor_char* ip_address, vor_char* interface_number)
{
    return request<route, 0x7011, sizeof(VOR_ETH_STATIC_ROUTE)>(
        NUMBER_FIELD(VOR_ETH_STATIC_ROUTE, device_no)(interface_number),
        ADDRESS_FIELD(VOR_ETH_STATIC_ROUTE, ip_address)(ip_address));
}

vor_int32 vor_cfg_remove_ip_route(vor_char* ip_address)
{
    // device_no stays as the buffer had it
    return request<route, 0x7013, sizeof(VOR_ETH_STATIC_ROUTE)>(
        ADDRESS_FIELD(VOR_ETH_STATIC_ROUTE, ip_address)(ip_address));
}
