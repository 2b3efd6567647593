#include <device_mgmt/snmp.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(snmp,
       call<vor_cfg_set_snmp_v2_server_community_name>("set-v2-server-community-name",
                                                       {text("name").secret(), object("mode"), "option"}, "- 1 1"),
       call<vor_cfg_set_snmp_v2_trap_server>("set-v2-trap-server",
                                             {object("ip_addr"), text("community_name").secret(), "option"},
                                             "203.0.113.30 - 1"),
       call<vor_cfg_set_snmp_server_v3_credentials>("set-server-v3-credentials",
                                                    {text("input_string").secret(),
                                                     number("mode").between(0, 1).object(),
                                                     number("option").between(1, 3).object()},
                                                    "- 1 1"),
       call<vor_cfg_set_snmp_server_enable>("set-server-enable", {"is_enabled"}, "1"),
       call<vor_cfg_set_snmp_server_v3_user_access>("set-server-v3-user-access", {object("input_string"), "access"},
                                                    "noc 1"),
       call<vor_cfg_set_snmp_server_v3_engine_id>("set-server-v3-engine-id", {"input_string"}, "8000000001020317"))

} // namespace vorcfg::rows
