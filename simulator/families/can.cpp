#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange settings = request(0x13003);
constexpr Field peer_id = uint32(11, "peer_id");

constexpr MessageRow rows[] = {
    {settings, "vor_cfg_set_can_channel_name", "peer {peer_id}", chain(text(4, "name"), int16(10, "set"), peer_id)},
    {settings, "vor_cfg_set_can_baudrate", "port {can_port}",
     chain(int16(1, "can_port"), text(5, "baudrate"), int16(10, "set"))},
    {settings, "vor_cfg_set_can_id", "port {port_num}",
     chain(int16(1, "port_num"), uint32(6, "can_id"), int16(10, "option"))},
    {settings, "vor_cfg_set_can_peer_id", "port {port_num}", chain(int16(1, "port_num"), peer_id, int16(10, "option"))},
    {settings, "vor_cfg_set_can_msg_id", "peer {peer_id}", chain(peer_id, uint32(12, "msg_id"), int16(10, "option"))},
};

extern const Family can{"canmgr", rows};

} // namespace vorsim::families
