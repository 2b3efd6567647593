#include <device_mgmt/gw.h>

#include "calls.hpp"

CALLS(gw) = {
    CALL(vor_cfg_set_gw_device_latitude_config(1, "12.9716N"_t), "sap 10 id 0xa008 flag 0x01 | 1 str '12.9716N'",
         flag_1001),
    SENDS(vor_cfg_set_gw_device_latitude_config(0, ""_t), "sap 10 id 0xa008 flag 0x00 | 1 str ''"),
    CALL(vor_cfg_set_gw_device_longitude_config(1, "77.5946E"_t), "sap 10 id 0xa009 flag 0x01 | 2 str '77.5946E'",
         flag_1002),
    SENDS(vor_cfg_set_gw_device_longitude_config(255, ""_t), "sap 10 id 0xa009 flag 0x00 | 2 str ''"),
};
