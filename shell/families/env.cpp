#include <device_mgmt/env.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(env, call<vor_cfg_get_system_temperature>("get-system-temperature", {result("system_temp")}, ""))

} // namespace vorcfg::rows
