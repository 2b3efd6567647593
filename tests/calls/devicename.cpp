#include <device_mgmt/devicename.h>

#include "calls.hpp"

CALLS(devicename) = {
    CALL(vor_cfg_set_device_name("gw-17"_t, 200), "sap 240 id 0x15014 | 27 str 'gw-17'", answered),
    CALL(vor_cfg_set_device_location(""_t, 200), "sap 240 id 0x15015 | 28 str ''", answered),
    CALL(vor_cfg_set_device_id(4294967295, 200), "sap 240 id 0x15016 | 29 i32 -1", answered),
};
