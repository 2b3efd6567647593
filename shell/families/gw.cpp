#include <device_mgmt/gw.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(gw,
       call<vor_cfg_set_gw_device_latitude_config>("set-device-latitude-config",
                                                   {number("set").between(0, 1), "latitude"}, "1 12.9716N"),
       call<vor_cfg_set_gw_device_longitude_config>("set-device-longitude-config",
                                                    {number("set").between(0, 1), "longitude"}, "1 77.5946E"))

} // namespace vorcfg::rows
