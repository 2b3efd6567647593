#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange rest = one_way(0x3002).to("restmgr");
constexpr Field service_name = text(1, "service_name");

constexpr MessageRow rows[] = {
    {rest, "vor_cfg_rest_set_bind_addr", "service {service_name}", chain(service_name, text(6, "bind_iface"))},
    {rest, "vor_cfg_rest_set_app", "service {service_name}", chain(service_name, text(4, "app_name"))},
    {rest, "vor_cfg_set_rest_config", "service {service_name}",
     chain(service_name, text(2, "ip_address"), uint16(3, "port_number"), int16(5, "security_option"))},
    {one_way(0xa003).to("datamgr"), "vor_cfg_set_protocol_svc", "service {service_name}",
     chain(service_name, int16(2, "protocol"))},
    {request(0x9004), "vor_cfg_set_service_chain", "chain {chain_name}",
     option_and_chain("mode", text(1, "chain_name"), text(2, "member").repeats())},
    {one_way(0x0fffe029).to_any_manager(), "vor_cfg_tp_set_app", "service {service_name}",
     chain(service_name, text(2, "app_name"))},
};

extern const Family svc{"svcmgr", rows};

} // namespace vorsim::families
