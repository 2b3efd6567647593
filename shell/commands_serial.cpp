#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_serial_polling>("serial", "set-polling", "port_num polling_freq option",
                                        "Sets how often a port is polled.", "1 1000 1"),
    command<vor_cfg_set_serial_databits>("serial", "set-databits", "port_num data_bits", "Sets a port's data bits.",
                                         "1 8", answer_unread),
    command<vor_cfg_set_serial_stopbits>("serial", "set-stopbits", "port_num stop_bits", "Sets a port's stop bits.",
                                         "1 1", answer_unread),
    command<vor_cfg_set_serial_speed>("serial", "set-speed", "port_num speed", "Sets a port's line speed.", "1 9600"),
    command<vor_cfg_set_serial_flowcontrol>("serial", "set-flowcontrol", "port_num flow_control",
                                            "Sets a port's flow control.", "1 0", answer_unread),
    command<vor_cfg_set_serial_parity>("serial", "set-parity", "port_num parity", "Sets a port's parity.", "1 0",
                                       answer_unread),
    command<vor_cfg_serial_set_channel>("serial", "set-channel", "port_num channel_name set-",
                                        "Names the data channel a port feeds.", "1 rectifier-console 1"),
};

std::span<const Row> serial_rows()
{
    return rows;
}

} // namespace vorcfg
