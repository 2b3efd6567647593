#include "families.hpp"
#include "ports.hpp"

namespace vorsim {
namespace {

constexpr Message settings = asks(5, 0x5004);
constexpr std::string_view input = "adc {adc_index}/{channel_index}";
constexpr Field adc_index = int16(1, "adc_index");
constexpr Field channel_index = int16(2, "channel_index");
constexpr Field mode = int16(3, "mode");
constexpr Field option = int16(7, "option");

constexpr std::int32_t channels_of_a_converter = 8;

Reply port_stats(const Told& told, const State& state, Readings& readings)
{
    const std::int32_t logical = told.number("adc_index") * channels_of_a_converter + told.number("channel_index");
    return port_statistics(5, told.object, static_cast<std::uint16_t>(logical), "read_mode", state, readings);
}

constexpr Call calls[] = {
    {settings, "vor_cfg_set_adc_config_polling", input,
     chain(adc_index, channel_index, mode, uint32(5, "polling_freq"), option), "mode"},
    {settings, "vor_cfg_set_adc_channel_name", input,
     chain(adc_index, channel_index, text(6, "name"), int16(7, "set"))},
    {settings, "vor_cfg_reset_adc_config_mode", input, chain(adc_index, channel_index, mode, option), "mode"},
    {asks(5, 0x5007),
     "vor_cfg_get_adc_port_stats",
     input,
     record(4, int16(0, "adc_index"), int16(2, "channel_index")),
     {},
     port_stats},
};

} // namespace

const Family adc{"adc", calls};

} // namespace vorsim
