// readings.hpp: readings that can be set.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/measurements.hpp"

namespace vorsim::gateway {

struct Setting {
    std::function<void(Measurements& measurements)> apply;
    std::string result; // "temperature set to 850"
};

// "temperature 850", "port 3 polling_count 0", "rssi wander", "counting 100".
// Throws a runtime_error.
Setting parse_setting(std::string_view words);

// A reading that is set.
struct HeldReading {
    std::string text;    // "temperature 850, 860, then wander"
    std::string release; // "temperature wander"; empty for a counter, which goes on by itself
};
std::vector<HeldReading> held_readings(const Measurements& measurements);

} // namespace vorsim::gateway
