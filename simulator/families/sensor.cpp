#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange flow = request(0xe003);
constexpr Field set_flag = int16(6, "set_flag");
constexpr Field sensor_name = text(1, "sensor_name");
constexpr Field flow_name = text(2, "flow_name");

constexpr MessageRow rows[] = {
    {flow, "vor_cfg_set_flow_data_template", "sensor {sensor_name} flow {flow_name}",
     chain(set_flag, sensor_name, flow_name, text(4, "template_file"))},
    {flow, "vor_cfg_set_flow_registration_template", "sensor {sensor_name} flow {flow_name}",
     chain(set_flag, sensor_name, flow_name, text(5, "template_file"))},
    {flow, "vor_cfg_set_sensor_flow_chain", "sensor {sensor_name} flow {flow_name}",
     chain(set_flag, sensor_name, flow_name, text(3, "chain_name"))},
    {request(0xe005), "vor_cfg_set_sensor_channel", "sensor {sensor_name}",
     chain(set_flag, sensor_name, text(7, "channel_name"))},
};

extern const Family sensor{"sensormgr", rows};

} // namespace vorsim::families
