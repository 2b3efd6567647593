#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_gpio_direction>("gpio", "set-direction", "port_num direction option",
                                        "Sets a port's direction.", "3 1 0"),
    command<vor_cfg_set_gpio_config_interrupt>("gpio", "set-config-interrupt", "port_num mode interrupt_type option",
                                               "Has a port read by interrupt.", "3 2 1 1"),
    command<vor_cfg_set_gpio_config_polling>("gpio", "set-config-polling", "port_num mode polling_freq option",
                                             "Has a port read by polling.", "4 1 500 1"),
    command<vor_cfg_set_gpio_channel_name>("gpio", "set-channel-name", "gpio_port name set",
                                           "Names the data channel a port feeds.", "3 door 1"),
    command<vor_cfg_set_gpio_value>("gpio", "set-value", "port_num value", "Drives an output.", "5 1"),
    command<vor_cfg_get_gpio_port_stats>("gpio", "get-port-stats", "port_num", "Reads a port's counters.", "3"),
};

std::span<const Row> gpio_rows()
{
    return rows;
}

} // namespace vorcfg
