/**
 * @file
 * ip.h: interface addressing, access point, DHCP server and routing.
 *
 * All go to the Ethernet manager (ethmgr, SAP 7). Addresses are dotted-quad
 * text, read by ip_aton, unless stated otherwise; text that does not parse is
 * then sent as 0.0.0.0. vor_errno is left alone at the start of a call unless
 * stated otherwise.
 *
 * Message buffers kept: both, when the answer has no status, and when the request's
 * has no room in vor_cfg_set_ip_address, the two DHCP client calls,
 * vor_cfg_set_default_gateway and vor_cfg_show_route_status. By the one-way calls:
 * their only one, when that has no room.
 */
#ifndef DEVICE_MGMT_IP_H
#define DEVICE_MGMT_IP_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* --- Records on the wire ---------------------------------------------- */

typedef struct _vor_config_eth_ip_ {
    vor_uchar eth_int_number;
    vor_uchar eth_conf_option;
    vor_uint32 ip_address;  /* network byte order */
    vor_uint32 subnet_mask; /* network byte order */
} VOR_ETH_CONFIG_IP;
VOR_LAYOUT(sizeof(VOR_ETH_CONFIG_IP) == 12);
VOR_LAYOUT(offsetof(VOR_ETH_CONFIG_IP, eth_int_number) == 0);
VOR_LAYOUT(offsetof(VOR_ETH_CONFIG_IP, eth_conf_option) == 1);
VOR_LAYOUT(offsetof(VOR_ETH_CONFIG_IP, ip_address) == 4);
VOR_LAYOUT(offsetof(VOR_ETH_CONFIG_IP, subnet_mask) == 8);

typedef struct _vor_config_dhcp_client_ {
    vor_uchar eth_int_number;
    vor_char eth_conf_option;
} VOR_ETH_DHCP_CLIENT_CONFIG;
VOR_LAYOUT(sizeof(VOR_ETH_DHCP_CLIENT_CONFIG) == 2);
VOR_LAYOUT(offsetof(VOR_ETH_DHCP_CLIENT_CONFIG, eth_int_number) == 0);
VOR_LAYOUT(offsetof(VOR_ETH_DHCP_CLIENT_CONFIG, eth_conf_option) == 1);

/* The meta-data byte of every request that takes a config_option. */
typedef struct _eth_config_mode_ {
    vor_uchar mode;
} ETH_CONFIG_MODE;
VOR_LAYOUT(sizeof(ETH_CONFIG_MODE) == 1);
VOR_LAYOUT(offsetof(ETH_CONFIG_MODE, mode) == 0);

typedef struct _vor_eth_default_gw_config_ {
    vor_char gw_conf_option;
    vor_uint16 iface_num;
    vor_uint32 default_gw; /* network byte order */
} VOR_ETH_DEFAULT_GW_CONFIG;
VOR_LAYOUT(sizeof(VOR_ETH_DEFAULT_GW_CONFIG) == 8);
VOR_LAYOUT(offsetof(VOR_ETH_DEFAULT_GW_CONFIG, gw_conf_option) == 0);
VOR_LAYOUT(offsetof(VOR_ETH_DEFAULT_GW_CONFIG, iface_num) == 2);
VOR_LAYOUT(offsetof(VOR_ETH_DEFAULT_GW_CONFIG, default_gw) == 4);

typedef struct _vor_interface_ {
    vor_char interface_num;
} VOR_INTERFACE;
VOR_LAYOUT(sizeof(VOR_INTERFACE) == 1);
VOR_LAYOUT(offsetof(VOR_INTERFACE, interface_num) == 0);

typedef enum _vor_eth_route_en_ { ENABLE = 0, DISABLE = 1 } VOR_ETH_ROUTE_EN;
VOR_LAYOUT(sizeof(VOR_ETH_ROUTE_EN) == 4);
VOR_LAYOUT(ENABLE == 0);
VOR_LAYOUT(DISABLE == 1);

typedef struct _vor_eth_route_via_ {
    vor_uint32 ip_address;     /* network byte order */
    vor_uint32 via_ip_address; /* written, but beyond the length sent */
} VOR_ETH_ROUTE_VIA;
VOR_LAYOUT(sizeof(VOR_ETH_ROUTE_VIA) == 8);
VOR_LAYOUT(offsetof(VOR_ETH_ROUTE_VIA, ip_address) == 0);
VOR_LAYOUT(offsetof(VOR_ETH_ROUTE_VIA, via_ip_address) == 4);

typedef struct _vor_eth_static_route_ {
    vor_uint16 device_no;
    vor_uint32 ip_address; /* network byte order */
} VOR_ETH_STATIC_ROUTE;
VOR_LAYOUT(sizeof(VOR_ETH_STATIC_ROUTE) == 8);
VOR_LAYOUT(offsetof(VOR_ETH_STATIC_ROUTE, device_no) == 0);
VOR_LAYOUT(offsetof(VOR_ETH_STATIC_ROUTE, ip_address) == 4);

typedef struct _vor_ip_set_status_ {
    vor_int32 set_status;
} VOR_ETH_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_ETH_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_ETH_SET_STATUS, set_status) == 0);

/* --- Interface addressing and access point ---------------------------- */

/**
 * Set a network interface's IPv4 address and mask. Sets vor_errno to 0 first.
 * The texts are read by inet_aton: "10.1" is 10.0.0.1. One that does not parse is sent as inet_aton left it, from 0 on:
 * glibc's leaves 0.0.0.0, musl's leaves 1.2.3.0 of 1.2.3.999.
 *
 * @param interface_number  0 is sent as message 0x7003, 1 and 2 as 0x7005; a larger number sends nothing
 * @param ip_address        dotted quad
 * @param subnet_mask       dotted quad
 * @param config_option     passed to the manager unchanged
 * @return the common codes; -4 also when the interface number sent nothing
 */
vor_int32 vor_cfg_set_ip_address(vor_uchar interface_number, vor_char* ip_address, vor_char* subnet_mask,
                                 vor_uchar config_option);

/**
 * Set a network interface's IPv6 address.
 *
 * @param interface_number  passed to the manager as a signed 16-bit number
 * @param ip_address        IPv6 address, passed to the manager unchanged
 * @param config_option     passed to the manager unchanged
 */
vor_int32 vor_cfg_set_ipv6_address(vor_uint16 interface_number, vor_char* ip_address, vor_char config_option);

/**
 * Enable or disable an interface's DHCP client.
 *
 * @param interface_number  passed to the manager unchanged
 * @param config_option     passed to the manager unchanged
 */
vor_int32 vor_cfg_set_dhcp(vor_uchar interface_number, vor_char config_option);

/**
 * Enable or disable an interface's DHCPv6 client.
 *
 * @param interface_number  passed to the manager unchanged
 * @param config_option     passed to the manager unchanged
 */
vor_int32 vor_cfg_set_ipv6_dhcp(vor_uchar interface_number, vor_char config_option);

/**
 * Set the security of a wireless interface. Note the order: password before network name.
 *
 * @param interface_number     passed to the manager unchanged
 * @param password             passphrase, passed to the manager unchanged
 * @param ssid                 network name, passed to the manager unchanged
 * @param encryption_protocol  passed to the manager as a signed 16-bit number
 * @param config_option        passed to the manager unchanged
 */
vor_int32 vor_cfg_set_interface_security_params(vor_uchar interface_number, vor_char* password, vor_char* ssid,
                                                vor_uint16 encryption_protocol, vor_uchar config_option);

/**
 * Set up the gateway's own Wi-Fi access point. Note the order: password before network name.
 * Once the manager has accepted, the same payload goes one-way to SAP 0 as message 2.
 *
 * @param intr_num       interface, passed to the manager as a signed 16-bit number
 * @param passwd         passphrase, passed to the manager unchanged
 * @param ssid           network name, passed to the manager unchanged
 * @param protocol       encryption, passed to the manager as a signed 16-bit number
 * @param country_code   passed to the manager as a signed 16-bit number
 * @param config_option  passed to the manager unchanged
 * @return the common codes; -3 also when the manager accepted but the notice to SAP 0 was refused
 */
vor_int32 vor_cfg_set_access_point_params(vor_uint16 intr_num, vor_char* passwd, vor_char* ssid, vor_uint16 protocol,
                                          vor_uint16 country_code, vor_char config_option);

/**
 * Do nothing. Kept so that programs link: no message is sent and nothing is written.
 *
 * @param interface_number  accepted, never sent
 * @param ip_address        left untouched
 * @param subnet_mask       left untouched
 * @return 0
 */
vor_int32 vor_cfg_get_ip_address(vor_uchar interface_number, vor_char* ip_address, vor_char* subnet_mask);

/**
 * Do nothing. Kept so that programs link: no message is sent and nothing is written.
 *
 * @param interface_number     accepted, never sent
 * @param password             left untouched
 * @param ssid                 left untouched
 * @param encryption_protocol  left untouched
 * @return 0
 */
vor_int32 vor_cfg_get_interface_security_params(vor_uchar interface_number, vor_char* password, vor_char* ssid,
                                                vor_uint16* encryption_protocol);

/* --- DHCP server ------------------------------------------------------ */

/**
 * Set the range of addresses a DHCP pool hands out. Sets vor_errno to 0 first.
 *
 * @param pool_name      the pool, passed to the manager unchanged
 * @param lo_addr        lowest address, dotted quad
 * @param hi_addr        highest address, dotted quad
 * @param addr_range     passed to the manager unchanged
 * @param config_option  its low 8 bits are passed to the manager: adds, changes or removes the setting, as the
 *                       manager codes it
 */
vor_int32 vor_cfg_set_dhcp_server_address_range(vor_char* pool_name, vor_char* lo_addr, vor_char* hi_addr,
                                                vor_int32 addr_range, vor_int16 config_option);

/**
 * Do nothing. Kept so that programs link: no message is sent and nothing is written.
 *
 * @param pool_name  accepted, never sent
 * @param lo_addr    left untouched
 * @param hi_addr    left untouched
 * @return 0
 */
vor_int32 vor_cfg_get_dhcp_server_address_range(vor_char* pool_name, vor_char* lo_addr, vor_char* hi_addr);

/**
 * Set the DNS servers a DHCP pool announces.
 *
 * @param pool_name       the pool, passed to the manager unchanged
 * @param dns_server_num  how many addresses follow, at most 4; a negative number is sent as it is, without addresses
 * @param config_option   adds, changes or removes the setting, as the manager codes it
 * @param ...             dns_server_num texts (vor_char*), dotted quads
 * @return the common codes; -1151 for more than 4 servers, before anything else happens
 */
vor_int32 vor_cfg_set_dhcp_server_dns(vor_char* pool_name, vor_int16 dns_server_num, vor_char config_option, ...);

/**
 * Name a DHCP pool.
 *
 * @param pool_name      the pool, passed to the manager unchanged
 * @param config_option  adds, changes or removes the setting, as the manager codes it
 */
vor_int32 vor_cfg_set_dhcp_server_pool_name(vor_char* pool_name, vor_char config_option);

/**
 * Set the interface a DHCP pool serves.
 *
 * @param pool_name         the pool, passed to the manager unchanged
 * @param interface_number  passed to the manager as a signed 16-bit number
 * @param config_option     adds, changes or removes the setting, as the manager codes it
 */
vor_int32 vor_cfg_set_dhcp_server_interface(vor_char* pool_name, vor_uint16 interface_number, vor_char config_option);

/**
 * Set a DHCP pool's subnet mask.
 *
 * @param pool_name      the pool, passed to the manager unchanged
 * @param subnet_mask    dotted quad
 * @param config_option  adds, changes or removes the setting, as the manager codes it
 */
vor_int32 vor_cfg_set_dhcp_server_subnet(vor_char* pool_name, vor_char* subnet_mask, vor_char config_option);

/**
 * Set the default router a DHCP pool announces.
 *
 * @param pool_name      the pool, passed to the manager unchanged
 * @param def_router     dotted quad
 * @param config_option  adds, changes or removes the setting, as the manager codes it
 */
vor_int32 vor_cfg_set_dhcp_server_def_router(vor_char* pool_name, vor_char* def_router, vor_char config_option);

/**
 * Set the domain name a DHCP pool announces.
 *
 * @param pool_name      the pool, passed to the manager unchanged
 * @param domain_name    passed to the manager unchanged
 * @param config_option  adds, changes or removes the setting, as the manager codes it
 */
vor_int32 vor_cfg_set_dhcp_server_domain_name(vor_char* pool_name, vor_char* domain_name, vor_char config_option);

/**
 * Set how long a DHCP pool's leases last.
 *
 * @param pool_name      the pool, passed to the manager unchanged
 * @param lease_time     in the manager's unit, passed to the manager unchanged
 * @param config_option  adds, changes or removes the setting, as the manager codes it
 */
vor_int32 vor_cfg_set_dhcp_server_lease_time(vor_char* pool_name, vor_int32 lease_time, vor_char config_option);

/**
 * Set the gateway's own resolver. One-way: the manager's verdict never comes back.
 *
 * @param def_search_domain  passed to the manager unchanged
 * @param intr_num           interface number as decimal text, cut to 16 bits
 * @param dns_server_num     how many addresses follow, at most 4; a negative number is sent as it is, without addresses
 * @param ...                dns_server_num texts (vor_char*), dotted quads
 * @return the common codes; -1151 for more than 4 servers, before anything else happens
 */
vor_int32 vor_cfg_set_dhcp_server_dns_client(vor_char* def_search_domain, vor_char* intr_num, vor_int16 dns_server_num,
                                             ...);

/* --- Routing ---------------------------------------------------------- */

/**
 * Set an interface's default gateway. Sets vor_errno to 0 first.
 *
 * @param def_gateway    dotted quad
 * @param iface_num      interface number as decimal text, cut to 16 bits
 * @param config_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_default_gateway(vor_char* def_gateway, vor_char* iface_num, vor_char config_option);

/**
 * Ask the manager to show an interface's route status. Only its verdict comes back.
 *
 * @param iface_num  interface number as decimal text, cut to 8 bits
 */
vor_int32 vor_cfg_show_route_status(vor_char* iface_num);

/**
 * Enable or disable IP forwarding. One-way: the manager's verdict never comes back.
 *
 * @param enable_status  number as decimal text, cut to 16 bits: "0" enables, "1" disables. Text that is not a number,
 *                       such as "off", counts as "0" and enables
 */
vor_int32 vor_cfg_enable_ip_routing(vor_char* enable_status);

/**
 * Add a route through another host. One-way: the manager's verdict never comes back.
 *
 * @param ip_address   destination, dotted quad
 * @param via_address  next hop, dotted quad; never sent: the length sent ends before it
 */
vor_int32 vor_cfg_set_via_route(vor_char* ip_address, vor_char* via_address);

/**
 * Add a route through an interface. One-way: the manager's verdict never comes back.
 *
 * @param ip_address        destination, dotted quad
 * @param interface_number  interface number as decimal text, cut to 16 bits
 */
vor_int32 vor_cfg_set_static_route(vor_char* ip_address, vor_char* interface_number);

/**
 * Remove the routes to an address. One-way: the manager's verdict never comes back.
 * The device number in the message is whatever its buffer held.
 *
 * @param ip_address  destination, dotted quad
 */
vor_int32 vor_cfg_remove_ip_route(vor_char* ip_address);

VOR_DECLARATIONS_END

#endif
