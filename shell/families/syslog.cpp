#include "rows/family.hpp"

namespace vorcfg {

FAMILY(syslog,
       call<vor_cfg_set_sysloginfo>("set-sysloginfo", {"mode", ipv4("ip_address"), port("port_number"), "protocol"},
                                    "1 192.168.1.5 514 1"),
       stub<vor_cfg_get_sysloginfo>("get-sysloginfo",
                                    {untouched("ip_address"), untouched("port_number"), untouched("protocol")}, ""))

} // namespace vorcfg
