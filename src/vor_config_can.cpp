// CAN ports and peers (canmgr).
#include <device_mgmt/can.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame can = sap(19) | clears_errno;        // answers compared in all 32 bits, lone request kept
constexpr Frame can_text = can | null_payload_keeps; // the two text calls check the payload area first
constexpr MessageId can_setting = 0x13003;

} // namespace

vor_int32 vor_cfg_set_can_channel_name(vor_uint32 peer_id, vor_char* name, vor_boolean set)
{
    return request<can_text, can_setting>(str<4>(name), int16<10>(set), int32<11>(peer_id));
}

vor_int32 vor_cfg_set_can_baudrate(vor_uchar can_port, vor_char* baudrate, vor_boolean set)
{
    return request<can_text, can_setting>(int16<1>(can_port), str<5>(baudrate), int16<10>(set));
}

vor_int32 vor_cfg_set_can_id(vor_int16 port_num, vor_uint32 can_id, vor_int16 option)
{
    return request<can, can_setting>(int16<1>(port_num), int32<6>(can_id), int16<10>(option));
}

vor_int32 vor_cfg_set_can_peer_id(vor_int16 port_num, vor_uint32 peer_id, vor_int16 option)
{
    return request<can, can_setting>(int16<1>(port_num), int32<11>(peer_id), int16<10>(option));
}

vor_int32 vor_cfg_set_can_msg_id(vor_uint32 peer_id, vor_uint32 msg_id, vor_int16 option)
{
    return request<can, can_setting>(int32<11>(peer_id), int32<12>(msg_id), int16<10>(option));
}
