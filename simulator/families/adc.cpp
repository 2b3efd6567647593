#include "families/port_statistics.hpp"
#include "tables/families.hpp"

namespace vorsim::families {
namespace {

constexpr Exchange settings = request(0x5004);
constexpr std::string_view input = "adc {adc_index}/{channel_index}";
constexpr Field adc_index = int16(1, "adc_index");
constexpr Field channel_index = int16(2, "channel_index");
constexpr Field mode = int16(3, "mode");
constexpr Field option = int16(7, "option");

constexpr std::int32_t channels_of_a_converter = 8;

gateway::Answer port_stats(const gateway::Decoded& decoded, const gateway::State& state,
                           gateway::Measurements& measurements)
{
    const std::int32_t logical =
        decoded.number("adc_index") * channels_of_a_converter + decoded.number("channel_index");
    return port_statistics(decoded, logical, "read_mode", state, measurements);
}

constexpr Reading readings[] = {{"adc * polling_count", counter}, {"adc * interrupt_count", counter}};

constexpr MessageRow rows[] = {
    {settings, "vor_cfg_set_adc_config_polling", input,
     chain(adc_index, channel_index, mode, uint32(5, "polling_freq"), option), "mode"},
    {settings, "vor_cfg_set_adc_channel_name", input,
     chain(adc_index, channel_index, text(6, "name"), int16(7, "set"))},
    {settings, "vor_cfg_reset_adc_config_mode", input, chain(adc_index, channel_index, mode, option), "mode"},
    {request(0x5007), "vor_cfg_get_adc_port_stats", input,
     record(4, uint16(0, "adc_index"), uint16(2, "channel_index")), port_stats},
};

} // namespace

extern const Family adc{"adcmgr", rows, readings};

} // namespace vorsim::families
