#include <device_mgmt/syslog.h>

#include "calls.hpp"

CALLS(syslog) = {
    CALL(vor_cfg_set_sysloginfo(200, "192.168.1.9"_t, 65535, 201),
         "sap 2 id 0x2012 record 12: c8 a5 a5 a5 c0 a8 01 09 ff ff c9 a5", record_text_read_first),
    SENDS(vor_cfg_set_sysloginfo(0, "syslog.example"_t, 514, 1),
          "sap 2 id 0x2012 record 12: 00 a5 a5 a5 00*4 02 02 01 a5"),
    CALL(vor_cfg_get_sysloginfo(nullptr, nullptr, nullptr), "nothing", nothing),
};
