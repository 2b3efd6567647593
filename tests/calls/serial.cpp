#include <device_mgmt/serial.h>

#include "calls.hpp"

CALLS(serial) = {
    CALL(vor_cfg_set_serial_polling(200, 0xffffffff, -3), "sap 16 id 0x10004 | 1 i16 200 | 17 i32 -1 | 16 i16 -3",
         answered),
    CALL(vor_cfg_set_serial_databits(200, -3), "sap 16 id 0x10004 | 1 i16 200 | 3 i16 -3", lone_dropped_never_matches),
    CALL(vor_cfg_set_serial_stopbits(200, -3), "sap 16 id 0x10004 | 1 i16 200 | 4 i16 -3", lone_dropped_never_matches),
    CALL(vor_cfg_set_serial_speed(200, 123456), "sap 16 id 0x10004 | 1 i16 200 | 5 i32 123456", lone_dropped),
    CALL(vor_cfg_set_serial_flowcontrol(200, -3), "sap 16 id 0x10004 | 1 i16 200 | 6 i16 -3",
         lone_dropped_never_matches),
    CALL(vor_cfg_set_serial_parity(200, -3), "sap 16 id 0x10004 | 1 i16 200 | 7 i16 -3", lone_dropped_never_matches),
    CALL(vor_cfg_serial_set_channel(200, "meter"_t, 1), "sap 16 id 0x10004 | 1 i16 200 | 2 str 'meter'",
         lone_dropped_errno_left),
};
