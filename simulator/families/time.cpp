#include "tables/families.hpp"

namespace vorsim::families {

constexpr Field option = int16(4, "option");

constexpr MessageRow rows[] = {
    {request(0x16001), "vor_set_ntp_server", "server {server_name}",
     chain(text(1, "server_name"), uint32(2, "port_no"), option)},
    {request(0x16002), "vor_set_timezone_string", "clock", chain(uint32(3, "time_zone_index"), option)},
};

extern const Family time{"ntpmgr", rows};

} // namespace vorsim::families
