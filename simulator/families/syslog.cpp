#include "tables/families.hpp"

namespace vorsim::families {

constexpr MessageRow rows[] = {
    {request(0x2012), "vor_cfg_set_sysloginfo", "syslog",
     record(12, byte(0, "mode"), address(4, "ip_address"), uint16(8, "port_number"), byte(10, "protocol"))},
};

extern const Family syslog{"platmgr", rows};

} // namespace vorsim::families
