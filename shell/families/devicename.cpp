#include <device_mgmt/devicename.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(devicename, call<vor_cfg_set_device_name>("set-device-name", {"device_name", unsent("option")}, "gateway-17 1"),
       call<vor_cfg_set_device_location>("set-device-location", {"device_location", unsent("option")},
                                         "\"shelter, rack 2\" 1"),
       call<vor_cfg_set_device_id>("set-device-id", {"sensor_id", unsent("option")}, "170001 1"))

} // namespace vorcfg::rows
