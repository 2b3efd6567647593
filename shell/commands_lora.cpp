#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<tarn_cfg_lora_set_channel>("lora", "set-channel", "port_num channel_name set-",
                                       "Binds a port to a data channel.", "1 soil-probe 1"),
};

std::span<const Row> lora_rows()
{
    return rows;
}

} // namespace vorcfg
