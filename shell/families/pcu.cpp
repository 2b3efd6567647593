#include <device_mgmt/pcu.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(pcu, call<vor_cfg_set_pcu_config_module>("set-config-module", {"serial_number"}, "PCU-2291-07"),
       call<vor_cfg_set_pcu_config_enable>("set-config-enable", {"is_enabled"}, "1"))

} // namespace vorcfg::rows
