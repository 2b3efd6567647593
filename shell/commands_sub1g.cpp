#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_sub1g_frequency>("sub1g", "set-frequency", "interface_num frequency",
                                         "Sets an interface's frequency.", "1 868"),
    command<vor_cfg_sub1g_set_channel>("sub1g", "set-channel", "port_num stream_name classifier channel_name",
                                       "Binds a stream and its classifier to a data channel.",
                                       "1 meters 2 meter-readings"),
    command<vor_cfg_get_reg_values>("sub1g", "get-reg-values", "sub1g_reg>", "Reads the transceiver's registers.", ""),
    command<vor_cfg_set_sub1g_power>("sub1g", "set-power", "interface_num power", "Sets an interface's power.", "1 10"),
};

std::span<const Row> sub1g_rows()
{
    return rows;
}

} // namespace vorcfg
