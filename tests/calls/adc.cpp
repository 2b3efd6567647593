#include <device_mgmt/adc.h>

#include "calls.hpp"

CALLS(adc) = {
    CALL(vor_cfg_set_adc_config_polling(200, -3, 4, 0xffffffff, 1),
         "sap 5 id 0x5004 | 1 i16 200 | 2 i16 -3 | 3 i16 4 | 5 i32 -1 | 7 i16 1", answered_low_half),
    CALL(vor_cfg_set_adc_config_interrupt(200, -3, 4, 255, 1), "nothing", nothing),
    CALL(vor_cfg_get_adc_port_stats(200, -3), "sap 5 id 0x5007 record 4: c8 00 fd ff", fetched_by_record),
    CALL(vor_cfg_set_adc_channel_name(200, 201, "level"_t, 0),
         "sap 5 id 0x5004 | 1 i16 200 | 2 i16 201 | 6 str 'level' | 7 i16 0", answered_low_half_place_kept),
    CALL(vor_cfg_reset_adc_config_mode(200, -3, 4, 1), "sap 5 id 0x5004 | 1 i16 200 | 2 i16 -3 | 3 i16 4 | 7 i16 1",
         answered_low_half),
};
