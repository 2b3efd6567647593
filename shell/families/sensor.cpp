#include <device_mgmt/sensor.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(sensor,
       call<vor_cfg_set_flow_data_template>("set-flow-data-template",
                                            {object("sensor_name"), object("flow_name"), "template_file", "set_flag"},
                                            "door-1 alarms data.json 1"),
       call<vor_cfg_set_flow_registration_template>("set-flow-registration-template",
                                                    {object("sensor_name"), object("flow_name"), "template_file",
                                                     "set_flag"},
                                                    "door-1 alarms register.json 1"),
       call<vor_cfg_set_sensor_flow_chain>("set-flow-chain",
                                           {object("sensor_name"), object("flow_name"), "chain_name", "set_flag"},
                                           "door-1 alarms filter-then-send 1"),
       call<vor_cfg_set_sensor_channel>("set-channel", {object("sensor_name"), "channel_name", "set_flag"},
                                        "door-1 door 1"))

} // namespace vorcfg::rows
