#include <device_mgmt/lora.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(lora, call<tarn_cfg_lora_set_channel>("set-channel", {object("port_num"), "channel_name", unsent("set")},
                                             "1 soil-probe 1"))

} // namespace vorcfg::rows
