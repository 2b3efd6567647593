// readings.hpp: readings set on command.
#pragma once

#include "gateway/measurements.hpp"

namespace vorsim {

// "temperature 850", "port 3 polling_count 0", "rssi wander", "counting 100".
// Returns what is now so; throws a runtime_error that says what was expected.
// Without measurements it is only checked.
std::string set_reading(std::string_view words, Measurements* measurements);

} // namespace vorsim
