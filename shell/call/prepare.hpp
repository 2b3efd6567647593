// prepare.hpp: the words of a line, made into a call.
#pragma once

#include <span>
#include <vector>

#include "input/input_error.hpp"
#include "input/secret.hpp"
#include "rows/row.hpp"

namespace vorcfg {

struct PreparedCall {
    const Row* row = nullptr;
    std::vector<Value> values; // one per argument, then the list
    Place place;
};

// The call of a line. Throws an InputError that names the word.
PreparedCall plan(std::span<const Word> line, Secrets& secrets, const Place& place = {});

} // namespace vorcfg
