// readings.hpp: readings set on command.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "gateway/measurements.hpp"

namespace vorsim {

struct Setting {
    enum class What : std::uint8_t { value, wander, counting };
    What what{};
    std::string reading{};
    std::uint64_t number{}; // the value, or how many times as fast counters count
    std::string said{};     // what is then so
};

// "temperature 850", "port 3 polling_count 0", "rssi wander", "counting 100".
// Throws a runtime_error that says what was expected.
Setting parse_setting(std::string_view words);
void apply(const Setting& setting, Measurements& measurements);

} // namespace vorsim
