// value.hpp: named values, for people and for programs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "text/json.hpp"

namespace vorsim {

using vor::Json;

inline constexpr std::size_t longest_in_line = 80; // of a text

// Ready to be shown: a secret is masked already.
struct Value {
    std::string_view name;
    std::string text;
    Json data;
    bool in_object{}; // told by the object's own text
};

// What came of something, for people and for the journal.
// NOLINTNEXTLINE(bugprone-exception-escape): the JSON library's destructor may run out of memory
struct Report {
    std::string line;
    Json record;
};

Json json_of(const std::vector<Value>& values);
// "name=value ..." of what the object does not tell.
std::string line_of(const std::vector<Value>& values);

} // namespace vorsim
