#include <device_mgmt/can.h>

#include "calls.hpp"

CALLS(can) = {
    CALL(vor_cfg_set_can_channel_name(0xffffffff, "rpm"_t, 0), "sap 19 id 0x13003 | 4 str 'rpm' | 10 i16 0 | 11 i32 -1",
         answered_place_kept),
    CALL(vor_cfg_set_can_baudrate(200, "125000"_t, 201), "sap 19 id 0x13003 | 1 i16 200 | 5 str '125000' | 10 i16 201",
         answered_place_kept),
    CALL(vor_cfg_set_can_id(200, 0x1fffffff, -3), "sap 19 id 0x13003 | 1 i16 200 | 6 i32 536870911 | 10 i16 -3",
         answered),
    CALL(vor_cfg_set_can_peer_id(200, 70000, -3), "sap 19 id 0x13003 | 1 i16 200 | 11 i32 70000 | 10 i16 -3", answered),
    CALL(vor_cfg_set_can_msg_id(70000, 0xffffffff, -3), "sap 19 id 0x13003 | 11 i32 70000 | 12 i32 -1 | 10 i16 -3",
         answered),
};
