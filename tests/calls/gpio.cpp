#include <device_mgmt/gpio.h>

#include "calls.hpp"

CALLS(gpio) = {
    CALL(vor_cfg_set_gpio_direction(200, -3, 1), "sap 4 id 0x4004 | 1 i16 200 | 2 i16 -3 | 6 i16 1", answered_low_half),
    CALL(vor_cfg_set_gpio_config_interrupt(200, -3, 255, 1),
         "sap 4 id 0x4004 | 1 i16 200 | 3 i16 -3 | 7 i32 255 | 6 i16 1", answered_low_half),
    CALL(vor_cfg_set_gpio_config_polling(200, -3, 0xffffffff, 1),
         "sap 4 id 0x4004 | 1 i16 200 | 3 i16 -3 | 4 i32 -1 | 6 i16 1", answered_low_half),
    CALL(vor_cfg_set_gpio_channel_name(200, "door"_t, 0), "sap 4 id 0x4004 | 1 i16 200 | 5 str 'door' | 6 i16 0",
         answered_low_half_place_kept),
    CALL(vor_cfg_set_gpio_value(200, -3), "sap 4 id 0x4006 one-way record 4: c8 00 fd ff", sent_record_errno_cleared),
    CALL(vor_cfg_get_gpio_port_stats(-3), "sap 4 id 0x4007 record 2: fd ff", fetched_by_record),
};
