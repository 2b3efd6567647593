#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_can_channel_name>("can", "set-channel-name", "peer_id name set",
                                          "Names the data channel a peer feeds.", "0x101 rectifier 1"),
    command<vor_cfg_set_can_baudrate>("can", "set-baudrate", "can_port baudrate set", "Sets a port's bit rate.",
                                      "1 250000 1"),
    command<vor_cfg_set_can_id>("can", "set-id", "port_num can_id option", "Sets a port's CAN identifier.",
                                "1 0x18ff50e5 1"),
    command<vor_cfg_set_can_peer_id>("can", "set-peer-id", "port_num peer_id option", "Sets a port's peer.",
                                     "1 0x101 1"),
    command<vor_cfg_set_can_msg_id>("can", "set-msg-id", "peer_id msg_id option",
                                    "Sets the message identifier of a peer.", "0x101 0x18ff50e6 1"),
};

std::span<const Row> can_rows()
{
    return rows;
}

} // namespace vorcfg
