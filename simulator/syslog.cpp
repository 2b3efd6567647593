#include "families.hpp"

namespace vorsim {
namespace {

constexpr Call calls[] = {
    {asks(2, 0x2012), "vor_cfg_set_sysloginfo", "syslog",
     record(12, byte(0, "mode"), address(4, "ip_address"), uint16(8, "port_number"), byte(10, "protocol"))},
};

} // namespace

const Family syslog{"syslog", calls};

} // namespace vorsim
