// Serial ports (serialmgr). The calls differ in how they treat the answer.
#include <device_mgmt/serial.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame serial = sap(16) | clears_errno; // answers compared in all 32 bits, lone request kept
constexpr Frame serial_speed = serial | lone_request_dropped;
constexpr Frame serial_unread = serial_speed | id_low_half; // 16 bits never equal 0x10004: delivered is -4, always
constexpr Frame serial_channel = sap(16) | lone_request_dropped | null_payload_drops;
constexpr MessageId serial_setting = 0x10004;

} // namespace

vor_int32 vor_cfg_set_serial_polling(vor_int16 port_num, vor_uint32 polling_freq, vor_int16 option)
{
    return request<serial, serial_setting>(int16<1>(port_num), int32<17>(polling_freq), int16<16>(option));
}

vor_int32 vor_cfg_set_serial_databits(vor_int16 port_num, vor_int16 data_bits)
{
    return request<serial_unread, serial_setting>(int16<1>(port_num), int16<3>(data_bits));
}

vor_int32 vor_cfg_set_serial_stopbits(vor_int16 port_num, vor_int16 stop_bits)
{
    return request<serial_unread, serial_setting>(int16<1>(port_num), int16<4>(stop_bits));
}

vor_int32 vor_cfg_set_serial_speed(vor_int16 port_num, vor_int32 speed)
{
    return request<serial_speed, serial_setting>(int16<1>(port_num), int32<5>(speed));
}

vor_int32 vor_cfg_set_serial_flowcontrol(vor_int16 port_num, vor_int16 flow_control)
{
    return request<serial_unread, serial_setting>(int16<1>(port_num), int16<6>(flow_control));
}

vor_int32 vor_cfg_set_serial_parity(vor_int16 port_num, vor_int16 parity)
{
    return request<serial_unread, serial_setting>(int16<1>(port_num), int16<7>(parity));
}

vor_int32 vor_cfg_serial_set_channel(vor_int16 port_num, vor_char* channel_name, vor_boolean /*set*/)
{
    return request<serial_channel, serial_setting>(int16<1>(port_num), str<2>(channel_name));
}
