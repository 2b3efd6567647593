#include "families/port_statistics.hpp"
#include "tables/families.hpp"

namespace vorsim::families {
namespace {

constexpr Exchange settings = request(0x4004);
constexpr Field port_num = int16(1, "port_num");
constexpr Field mode = int16(3, "mode");
constexpr Field option = int16(6, "option");

gateway::Answer port_stats(const gateway::Decoded& decoded, const gateway::State& state,
                           gateway::Measurements& measurements)
{
    return port_statistics(decoded, decoded.number("port_num"), "mode", state, measurements);
}

constexpr Reading readings[] = {{"port * polling_count", counter}, {"port * interrupt_count", counter}};

constexpr MessageRow rows[] = {
    {settings, "vor_cfg_set_gpio_direction", "port {port_num}", chain(port_num, int16(2, "direction"), option)},
    {settings, "vor_cfg_set_gpio_config_interrupt", "port {port_num}",
     chain(port_num, mode, int32(7, "interrupt_type"), option), "mode"},
    {settings, "vor_cfg_set_gpio_config_polling", "port {port_num}",
     chain(port_num, mode, uint32(4, "polling_freq"), option), "mode"},
    {settings, "vor_cfg_set_gpio_channel_name", "port {gpio_port}",
     chain(int16(1, "gpio_port"), text(5, "name"), int16(6, "set"))},
    {one_way(0x4006), "vor_cfg_set_gpio_value", "port {port_num}",
     record(4, uint16(0, "port_num"), uint16(2, "value"))},
    {request(0x4007), "vor_cfg_get_gpio_port_stats", "port {port_num}", record(2, uint16(0, "port_num")), port_stats},
};

} // namespace

extern const Family gpio{"gpiomgr", rows, readings};

} // namespace vorsim::families
