#include <device_mgmt/time.h>

#include "calls.hpp"

CALLS(time) = {
    CALL(vor_set_ntp_server("ntp.example"_t, 70000, 65537),
         "sap 22 id 0x16001 | 1 str 'ntp.example' | 2 i32 70000 | 4 i16 1", answered),
    SENDS(vor_set_ntp_server("ntp.example"_t, 0xffffffff, -3),
          "sap 22 id 0x16001 | 1 str 'ntp.example' | 2 i32 -1 | 4 i16 -3"),
    CALL(vor_set_timezone_string(70000, 65537), "sap 22 id 0x16002 | 3 i32 70000 | 4 i16 1", answered),
};
