#include "tables/families.hpp"

namespace vorsim::families {

// The caller expects the serial manager's id.
constexpr MessageRow rows[] = {
    {request(0x18003).answered_as(0x10004), "tarn_cfg_lora_set_channel", "port {port_num}",
     chain(int16(1, "port_num"), text(2, "channel_name"))},
};

extern const Family lora{"loramgr", rows};

} // namespace vorsim::families
