// stored.hpp: a state, read back from the JSON that it is shown as.
#pragma once

#include "gateway/state.hpp"
#include "konfd/konfd.hpp"

namespace vorsim {

// Both throw for what is no such state, and say where.
State stored_state(const Json& held);
// What was masked cannot be stored again.
void store_konfd(konfd::Konfd& konfd, const Json& lines);

} // namespace vorsim
