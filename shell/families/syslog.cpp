#include <device_mgmt/syslog.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

namespace {

constexpr RecordField server[] = {FIELD(SYSLOG_INFO, mode), FIELD(SYSLOG_INFO, ip_address),
                                  FIELD(SYSLOG_INFO, port_number), FIELD(SYSLOG_INFO, protocol)};

} // namespace

FAMILY(syslog,
       call<vor_cfg_set_sysloginfo>("set-sysloginfo", {"mode", ipv4("ip_address"), port("port_number"), "protocol"},
                                    "1 192.168.1.5 514 1")
           .sends(server),
       stub<vor_cfg_get_sysloginfo>("get-sysloginfo",
                                    {untouched("ip_address"), untouched("port_number"), untouched("protocol")}, ""))

} // namespace vorcfg::rows
