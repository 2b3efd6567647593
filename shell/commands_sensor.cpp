#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_flow_data_template>(
        "sensor", "set-flow-data-template", "sensor_name flow_name template_file set_flag",
        "Sets the template that formats a flow's data.", "door-1 alarms data.json 1"),
    command<vor_cfg_set_flow_registration_template>(
        "sensor", "set-flow-registration-template", "sensor_name flow_name template_file set_flag",
        "Sets the template that formats a flow's registration.", "door-1 alarms register.json 1"),
    command<vor_cfg_set_sensor_flow_chain>("sensor", "set-flow-chain", "sensor_name flow_name chain_name set_flag",
                                           "Sets the processing chain a flow passes through.",
                                           "door-1 alarms filter-then-send 1"),
    command<vor_cfg_set_sensor_channel>("sensor", "set-channel", "sensor_name channel_name set_flag",
                                        "Sets the data channel a sensor reads.", "door-1 door 1"),
};

std::span<const Row> sensor_rows()
{
    return rows;
}

} // namespace vorcfg
