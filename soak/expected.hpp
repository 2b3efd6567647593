// expected.hpp: what a call of a manager must come to, from its row's strip and what the gateway did.
#pragma once

#include <vector>

#include "calls.hpp"
#include "calls/calls.hpp"

namespace soak {

std::vector<Outcome> expected_of(const ::Row& row, const Made& made);

} // namespace soak
