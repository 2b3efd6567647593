// expected.hpp: the outcome that a call of a manager must have, from its row's strip and the gateway's records.
#pragma once

#include <vector>

#include "calls.hpp"
#include "calls/calls.hpp"

namespace soak {

std::vector<Outcome> expected_of(const ::Row& row, const Made& made);

} // namespace soak
