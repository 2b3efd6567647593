// The sub-1 GHz radio (sub1gmgr).
#include <device_mgmt/sub1g.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame sub1g = sap(8) | clears_errno | lone_request_dropped | id_low_half;
constexpr Frame sub1g_channel = sub1g | null_payload_drops; // the channel call alone checks the payload area first
constexpr Frame sub1g_registers = sap(8) | refused_keeps_response | id_low_half; // lone request kept
constexpr MessageId sub1g_setting = 0x8004;
constexpr MessageId read_registers = 0x8009;

} // namespace

vor_int32 vor_cfg_set_sub1g_frequency(vor_int16 interface_num, vor_int16 frequency)
{
    return request<sub1g, sub1g_setting>(int16<1>(interface_num), int16<2>(frequency));
}

vor_int32 vor_cfg_sub1g_set_channel(vor_int16 port_num, vor_char* stream_name, vor_uchar classifier,
                                    vor_char* channel_name)
{
    return request<sub1g_channel, sub1g_setting>(int16<1>(port_num), str<3>(stream_name), int16<4>(classifier),
                                                 str<5>(channel_name));
}

// Success means that there was an answer, not that it was a snapshot.
vor_int32 vor_cfg_get_reg_values(SUB1G_CONFIG_REG** sub1g_reg)
{
    Exchange exchange;
    if (exchange.take_buffers<sub1g_registers, read_registers>() != ok || exchange.send_and_receive() != ok) {
        return -1;
    }
    if (exchange.answer_matches()) {
        *sub1g_reg = reinterpret_cast<SUB1G_CONFIG_REG*>(payload_of(exchange.response));
    }
    exchange.drop_buffers();
    return 0;
}

vor_int32 vor_cfg_set_sub1g_power(vor_int16 interface_num, vor_int16 power)
{
    return request<sub1g, 0x800b>(int16<1>(interface_num), int16<9>(power));
}
