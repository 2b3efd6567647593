#include <device_mgmt/svc.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(svc, call<vor_cfg_rest_set_bind_addr>("rest-set-bind-addr", {object("service_name"), "bind_iface"}, "rest eth0"),
       call<vor_cfg_rest_set_app>("rest-set-app", {object("service_name"), "app_name"}, "rest telemetry"),
       call<vor_cfg_set_rest_config>("set-rest-config",
                                     {object("service_name"), "ip_address", port("port_number"), "security_option"},
                                     "rest 203.0.113.10 8443 1"),
       call<vor_cfg_set_protocol_svc>("set-protocol-svc", {object("service_name"), "protocol"}, "uplink 1"),
       call<vor_cfg_set_service_chain>("set-service-chain",
                                       {"mode", object("chain_name"), count("elm_count"),
                                        text("member").list(most_listed)},
                                       "1 filter-then-send filter scale uplink"),
       call<vor_cfg_tp_set_app>("tp-set-app",
                                {object("service_name"), "app_name", number("app_sap_id").fits<vor_uint16>().object()},
                                "uplink telemetry 15"))

} // namespace vorcfg::rows
