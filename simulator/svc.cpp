#include "families.hpp"

namespace vorsim {
namespace {

constexpr Message rest = tells(3, 0x3002);
constexpr Field service_name = text(1, "service_name");

constexpr Call calls[] = {
    {rest, "vor_cfg_rest_set_bind_addr", "service {service_name}", chain(service_name, text(6, "bind_iface"))},
    {rest, "vor_cfg_rest_set_app", "service {service_name}", chain(service_name, text(4, "app_name"))},
    {rest, "vor_cfg_set_rest_config", "service {service_name}",
     chain(service_name, text(2, "ip_address"), uint16(3, "port_number"), int16(5, "security_option"))},
    {tells(10, 0xa003), "vor_cfg_set_protocol_svc", "service {service_name}",
     chain(service_name, int16(2, "protocol"))},
    {asks(9, 0x9004), "vor_cfg_set_service_chain", "chain {chain_name}",
     option_and_chain("mode", text(1, "chain_name"), text(2, "member").repeats())},
    {tells(any_sap, 0x0fffe029), "vor_cfg_tp_set_app", "service {service_name}",
     chain(service_name, text(2, "app_name"))},
};

} // namespace

const Family svc{"svc", calls};

} // namespace vorsim
