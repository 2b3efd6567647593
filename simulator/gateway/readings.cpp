#include "gateway/readings.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/core.h>
#include <fnmatch.h>

#include "tables/families.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::gateway {
namespace {

// Null: unknown.
const tables::Reading* find(const std::string& name, std::vector<std::string>& known)
{
    for (const tables::Family* family : tables::all_families()) {
        for (const tables::Reading& reading : family->readings) {
            known.emplace_back(reading.name);
            if (fnmatch(known.back().c_str(), name.c_str(), 0) == 0) {
                return &reading;
            }
        }
    }
    return nullptr;
}

} // namespace

Setting parse_setting(std::string_view words)
{
    const std::size_t blank = std::min(words.rfind(' '), words.size());
    const std::string name(words.substr(0, blank));
    const std::string_view value = words.substr(std::min(blank + 1, words.size()));
    if (name == "counting") {
        const auto times = vor::number_in<std::uint64_t>(value);
        if (!times || *times == 0 || *times > 1'000'000) {
            throw std::runtime_error(fmt::format("counting must be 1 to 1000000, not \"{}\"", vor::escaped(value)));
        }
        return {[speed = *times](Measurements& measurements) { measurements.speed_up(speed); },
                fmt::format("counters run {} times as fast", *times)};
    }
    std::vector<std::string> known;
    const tables::Reading* const reading = find(name, known);
    if (reading == nullptr) {
        throw std::runtime_error(fmt::format(
            "unknown reading \"{}\"{}", vor::escaped(name),
            vor::suggestion(vor::nearest(name, known),
                            "expected temperature, port N polling_count, port N interrupt_count, adc N/N "
                            "polling_count, adc N/N interrupt_count, a transceiver register such as rssi, or "
                            "counting")));
    }
    if (value == "wander") {
        return {[name](Measurements& measurements) { measurements.release(name); }, fmt::format("{} wanders", name)};
    }
    const auto number = vor::integer_in(value);
    const bool at_least = number && number->exact &&
                          (number->negative ? number->bounded() >= reading->least
                                            : std::cmp_greater_equal(number->magnitude, reading->least));
    if (!at_least || (!number->negative && number->magnitude > reading->most)) {
        throw std::runtime_error(fmt::format("{} must be {} to {}{}, not \"{}\"", name, reading->least, reading->most,
                                             reading->counts ? "" : " or wander", vor::escaped(value)));
    }
    const std::uint64_t set_to = number->negative ? static_cast<std::uint64_t>(number->bounded()) : number->magnitude;
    return {[name, set_to](Measurements& measurements) { measurements.set(name, set_to); },
            fmt::format("{} set to {}", name, value)};
}

} // namespace vorsim::gateway
