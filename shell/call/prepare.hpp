// prepare.hpp: the words of a line, made into a call.
#pragma once

#include <span>
#include <vector>

#include "input/input_error.hpp"
#include "input/secret.hpp"
#include "rows/row.hpp"

namespace vorcfg::call {

struct PreparedCall {
    const rows::Row* row = nullptr;
    std::vector<rows::Value> values; // one per argument, then the list
    input::Place place;
};

// The call of a line. Throws an InputError that names the word.
PreparedCall prepare(std::span<const input::Word> line, input::Secrets& secrets, const input::Place& place = {});

} // namespace vorcfg::call
