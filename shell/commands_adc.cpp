#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_adc_config_polling>("adc", "set-config-polling",
                                            "adc_index channel_index mode polling_freq option",
                                            "Has an input read by polling.", "1 2 1 1000 1"),
    local<vor_cfg_set_adc_config_interrupt>("adc", "set-config-interrupt",
                                            "adc_index- cahnnel_index- mode- interrupt_type- option-", "Does nothing.",
                                            "1 2 2 1 1", does_nothing),
    command<vor_cfg_get_adc_port_stats>("adc", "get-port-stats", "adc_index channel_index",
                                        "Reads an input's counters.", "1 2"),
    command<vor_cfg_set_adc_channel_name>("adc", "set-channel-name", "adc_index channel_index name set",
                                          "Names the data channel an input feeds.", "1 2 battery-voltage 1"),
    command<vor_cfg_reset_adc_config_mode>("adc", "reset-config-mode", "adc_index channel_index mode option",
                                           "Takes an input's read mode back.", "1 2 1 0"),
};

std::span<const Row> adc_rows()
{
    return rows;
}

} // namespace vorcfg
