// fit.hpp: which of a message's rows a payload fits, or why it fits none.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tables/row.hpp"

namespace vorsim::gateway {

using Bytes = std::span<const std::uint8_t>;

// An element or a field of the row, and what the message holds for it.
struct Part {
    const tables::Field* field;
    Bytes bytes;
    std::int32_t number;
};

// A text's bytes up to its terminator.
std::string_view text_in(const Part& part);

// The row that the payload fits, and its parts; or null and what is wrong.
struct Fitting {
    const tables::MessageRow* row{};
    std::vector<Part> parts{};
    std::string wrong{};
};

// The rows are those of one message: they share a form.
Fitting fit(const std::vector<const tables::MessageRow*>& rows, Bytes payload);

} // namespace vorsim::gateway
