// readings.hpp: readings that can be set.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "gateway/measurements.hpp"

namespace vorsim::gateway {

struct Setting {
    std::function<void(Measurements& measurements)> apply;
    std::string result; // "temperature set to 850"
};

// "temperature 850", "port 3 polling_count 0", "rssi wander", "counting 100".
// Throws a runtime_error.
Setting parse_setting(std::string_view words);

} // namespace vorsim::gateway
