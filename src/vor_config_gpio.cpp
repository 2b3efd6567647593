// Digital inputs and outputs (gpiomgr).
#include <device_mgmt/gpio.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame gpio = sap(4) | clears_errno | id_low_half; // lone request kept
constexpr Frame gpio_named = gpio | null_payload_keeps;     // the name call alone checks the payload area first
constexpr Frame gpio_output = sap(4) | clears_errno | one_way | null_payload_keeps;
constexpr Frame gpio_counters = sap(4) | id_low_half | null_payload_drops | refused_keeps_response;
constexpr MessageId gpio_setting = 0x4004;

} // namespace

vor_int32 vor_cfg_set_gpio_direction(vor_int16 port_num, vor_int16 direction, vor_int16 option)
{
    return request<gpio, gpio_setting>(int16<1>(port_num), int16<2>(direction), int16<6>(option));
}

vor_int32 vor_cfg_set_gpio_config_interrupt(vor_int16 port_num, vor_int16 mode, vor_uchar interrupt_type,
                                            vor_int16 option)
{
    return request<gpio, gpio_setting>(int16<1>(port_num), int16<3>(mode), int32<7>(interrupt_type), int16<6>(option));
}

vor_int32 vor_cfg_set_gpio_config_polling(vor_int16 port_num, vor_int16 mode, vor_uint32 polling_freq, vor_int16 option)
{
    return request<gpio, gpio_setting>(int16<1>(port_num), int16<3>(mode), int32<4>(polling_freq), int16<6>(option));
}

vor_int32 vor_cfg_set_gpio_channel_name(vor_uchar gpio_port, vor_char* name, vor_boolean set)
{
    return request<gpio_named, gpio_setting>(int16<1>(gpio_port), str<5>(name), int16<6>(set));
}

vor_int32 vor_cfg_set_gpio_value(vor_int16 port_num, vor_int16 value)
{
    return request<gpio_output, 0x4006, sizeof(VOR_GPIO_PORT_SET)>(FIELD(VOR_GPIO_PORT_SET, gpio_sw_port)(port_num),
                                                                   FIELD(VOR_GPIO_PORT_SET, value)(value));
}

GPIO_PIN_STATS* vor_cfg_get_gpio_port_stats(vor_int16 port_num)
{
    return statistics<GPIO_PIN_STATS, gpio_counters, 0x4007, sizeof(GPIO_PIN_NO)>(
        FIELD(GPIO_PIN_NO, logical_port_no)(port_num));
}
