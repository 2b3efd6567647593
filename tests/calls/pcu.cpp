#include <device_mgmt/pcu.h>

#include "calls.hpp"

CALLS(pcu) = {
    CALL(vor_cfg_set_pcu_config_module("SN-1"_t), "sap 23 id 0x17001 | 1 str 'SN-1'", lone_dropped),
    CALL(vor_cfg_set_pcu_config_enable(200), "sap 23 id 0x17001 | 2 i16 200; prints `Success\\n`", lone_dropped_prints),
    SENDS(vor_cfg_set_pcu_config_enable(0), "sap 23 id 0x17001 | 2 i16 0; prints `Success\\n`"),
};
