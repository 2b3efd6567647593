#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_rest_set_bind_addr>("svc", "rest-set-bind-addr", "service_name bind_iface",
                                        "Binds the REST service to an interface (restmgr, SAP 3).", "rest eth0"),
    command<vor_cfg_rest_set_app>("svc", "rest-set-app", "service_name app_name",
                                  "Names the REST service's application (restmgr, SAP 3).", "rest telemetry"),
    command<vor_cfg_set_rest_config>("svc", "set-rest-config", "service_name ip_address port_number security_option",
                                     "Points the REST service at its peer (restmgr, SAP 3).",
                                     "rest 203.0.113.10 8443 1"),
    command<vor_cfg_set_protocol_svc>("svc", "set-protocol-svc", "service_name protocol",
                                      "Declares a protocol service (datamgr, SAP 10).", "uplink 1"),
    command<vor_cfg_set_service_chain>("svc", "set-service-chain", "mode chain_name elm_count# member...",
                                       "Defines a service chain and waits for the verdict (svcmgr, SAP 9).",
                                       "1 filter-then-send filter scale uplink"),
    command<vor_cfg_tp_set_app>("svc", "tp-set-app", "service_name app_name app_sap_id",
                                "Binds an application to a transport service, at the SAP the caller names.",
                                "uplink telemetry 15"),
};

std::span<const Row> svc_rows()
{
    return rows;
}

} // namespace vorcfg
