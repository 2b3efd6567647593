#include "tables/families.hpp"

namespace vorsim::families {
namespace {

constexpr Exchange v2 = one_way(0x15017);
constexpr Exchange enable = one_way(0x15001);
constexpr Exchange v3 = request(0x15001);
constexpr Field option = int16(4, "option");

// The tag implies mode and option; the option is also sent by itself and has to agree.
constexpr MessageRow credential(std::uint16_t tag, std::string_view object, std::int32_t value)
{
    return {v3, "vor_cfg_set_snmp_server_v3_credentials", object,
            chain(text(tag, "input_string").secret(), option.holding(value))};
}

constexpr MessageRow rows[] = {
    {v2, "vor_cfg_set_snmp_v2_server_community_name", "community mode {mode}",
     chain(text(1, "name").secret(), int16(2, "mode"), option)},
    {v2, "vor_cfg_set_snmp_v2_trap_server", "trap {ip_addr}",
     chain(text(3, "ip_addr"), text(5, "community_name").secret(), option)},
    credential(33, "v3 credential mode 1 option {option}", 1),
    credential(34, "v3 credential mode 1 option {option}", 2),
    credential(35, "v3 credential mode 1 option {option}", 3),
    credential(36, "v3 credential mode 0 option {option}", 1),
    credential(37, "v3 credential mode 0 option {option}", 2),
    credential(38, "v3 credential mode 0 option {option}", 3),
    {v3, "vor_cfg_set_snmp_server_v3_credentials", "v3 credential option {option}", chain(option)},
    {enable, "vor_cfg_set_snmp_server_enable", "agent", chain(int16(39, "is_enabled"))},
    {v3, "vor_cfg_set_snmp_server_v3_user_access", "v3 user {input_string}",
     chain(text(40, "input_string"), int16(2, "access"))},
    {v3, "vor_cfg_set_snmp_server_v3_engine_id", "agent", chain(text(41, "input_string"))},
};

} // namespace

extern const Family snmp{"snmpmgr", rows};

} // namespace vorsim::families
