#include <device_mgmt/sensor.h>

#include "calls.hpp"

CALLS(sensor) = {
    CALL(vor_cfg_set_flow_data_template("t1"_t, "f"_t, "d.json"_t, 200),
         "sap 14 id 0xe003 | 6 i16 200 | 1 str 't1' | 2 str 'f' | 4 str 'd.json'", lone_dropped_request_first),
    CALL(vor_cfg_set_flow_registration_template("t1"_t, "f"_t, "r.json"_t, 200),
         "sap 14 id 0xe003 | 6 i16 200 | 1 str 't1' | 2 str 'f' | 5 str 'r.json'", lone_dropped_request_first),
    CALL(vor_cfg_set_sensor_flow_chain("t1"_t, "f"_t, "c"_t, 200),
         "sap 14 id 0xe003 | 6 i16 200 | 1 str 't1' | 2 str 'f' | 3 str 'c'", lone_dropped_request_first),
    CALL(vor_cfg_set_sensor_channel("t1"_t, "level"_t, 0), "sap 14 id 0xe005 | 6 i16 0 | 1 str 't1' | 7 str 'level'",
         lone_dropped_request_first),
};
