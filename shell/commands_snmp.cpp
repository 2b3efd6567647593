#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_snmp_v2_server_community_name>("snmp", "set-v2-server-community-name", "name mode option",
                                                       "Sets an SNMPv2 community.", "noc-read 1 1"),
    command<vor_cfg_set_snmp_v2_trap_server>("snmp", "set-v2-trap-server", "ip_addr community_name option",
                                             "Sets the SNMPv2 trap receiver.", "203.0.113.30 noc-trap 1"),
    command<vor_cfg_set_snmp_server_v3_credentials>("snmp", "set-server-v3-credentials", "input_string* mode option",
                                                    "Sets one SNMPv3 credential.", "- 1 1"),
    command<vor_cfg_set_snmp_server_enable>("snmp", "set-server-enable", "is_enabled", "Switches the SNMP agent.", "1"),
    command<vor_cfg_set_snmp_server_v3_user_access>("snmp", "set-server-v3-user-access", "input_string access",
                                                    "Sets an SNMPv3 user's access.", "noc 1"),
    command<vor_cfg_set_snmp_server_v3_engine_id>("snmp", "set-server-v3-engine-id", "input_string",
                                                  "Sets the SNMPv3 engine id.", "8000000001020317"),
};

std::span<const Row> snmp_rows()
{
    return rows;
}

} // namespace vorcfg
