// plan.hpp: from words to a call that is ready to be made.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "row.hpp"
#include "secrets.hpp"

namespace vorcfg {

struct Planned {
    const Row* row = nullptr;
    std::vector<Argument> arguments;
    std::vector<Value> values; // one per argument, then the list
    std::string place;         // FILE:LINE of a batch
};

struct Range {
    std::int64_t least;
    std::int64_t most;
};

Range range_of(const Argument& argument);
std::string_view kind_of(const Argument& argument);

// Decimal, or hexadecimal with 0x.
std::optional<std::int64_t> number_of(std::string_view text);

// Throws a Complaint that names the argument.
Planned plan(const Row& row, std::span<const Token> tokens, const SecretSources& sources);

// A text that goes into a konfd command, which has no way to quote anything.
void check_konfd_text(std::string_view name, std::string_view text, std::size_t token);

} // namespace vorcfg
