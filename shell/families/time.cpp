#include <device_mgmt/time.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(time,
       call<vor_set_ntp_server>("set-ntp-server",
                                {object("server_name"), port("port_no"), number("option").fits<vor_int16>()},
                                "pool.ntp.example 123 1"),
       call<vor_set_timezone_string>("set-timezone-string", {"time_zone_index", number("option").fits<vor_int16>()},
                                     "44 1"))

} // namespace vorcfg::rows
