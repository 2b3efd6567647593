// prepare.hpp: the words of a line, made into a call.
#pragma once

#include <span>
#include <string_view>
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

// The row's example, with this secret.
inline constexpr std::string_view sample_secret = "Monsoon-17";
PreparedCall prepare_example(const rows::Row& row);

} // namespace vorcfg::call
