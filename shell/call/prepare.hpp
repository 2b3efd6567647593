// prepare.hpp: from the words of a line to a call that is ready to be made.
#pragma once

#include <span>
#include <vector>

#include "input/complaint.hpp"
#include "input/secret.hpp"
#include "rows/row.hpp"

namespace vorcfg {

struct Planned {
    const Row* row = nullptr;
    std::vector<Value> values; // one per argument, then the list
    Place place;
};

// The call that a line means. Throws a Complaint that names the word.
Planned plan(std::span<const Word> line, Secrets& secrets, const Place& place = {});

} // namespace vorcfg
