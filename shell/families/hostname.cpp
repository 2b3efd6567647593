#include <device_mgmt/hostname.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(hostname, call<vor_cfg_set_plat_hostname>("set-plat-hostname", {"hostname"}, "tower-17"))

} // namespace vorcfg::rows
