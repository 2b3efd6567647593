// readings.hpp: readings set on command.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "gateway/measurements.hpp"

namespace vorsim {

struct Setting {
    std::function<void(Measurements& measurements)> apply;
    std::string said; // what is then so
};

// "temperature 850", "port 3 polling_count 0", "rssi wander", "counting 100".
// Throws a runtime_error that says what was expected.
Setting parse_setting(std::string_view words);

} // namespace vorsim
