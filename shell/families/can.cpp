#include <device_mgmt/can.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(can,
       call<vor_cfg_set_can_channel_name>("set-channel-name", {object("peer_id"), "name", "set"}, "0x101 rectifier 1"),
       call<vor_cfg_set_can_baudrate>("set-baudrate", {object("can_port"), "baudrate", "set"}, "1 250000 1"),
       call<vor_cfg_set_can_id>("set-id", {object("port_num"), "can_id", "option"}, "1 0x18ff50e5 1"),
       call<vor_cfg_set_can_peer_id>("set-peer-id", {object("port_num"), "peer_id", "option"}, "1 0x101 1"),
       call<vor_cfg_set_can_msg_id>("set-msg-id", {object("peer_id"), "msg_id", "option"}, "0x101 0x18ff50e6 1"))

} // namespace vorcfg::rows
