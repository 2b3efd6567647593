#include "rows/family.hpp"

namespace vorcfg {

FAMILY(sub1g, call<vor_cfg_set_sub1g_frequency>("set-frequency", {object("interface_num"), "frequency"}, "1 868"),
       call<vor_cfg_sub1g_set_channel>("set-channel",
                                       {object("port_num"), object("stream_name"), "classifier", "channel_name"},
                                       "1 meters 2 meter-readings"),
       call<vor_cfg_get_reg_values>("get-reg-values", {result("sub1g_reg")}, ""),
       call<vor_cfg_set_sub1g_power>("set-power", {object("interface_num"), "power"}, "1 10"))

} // namespace vorcfg
