// json.hpp: records as lines of JSON, of the journal and of what is watched.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "values/record.hpp"

namespace vor {
class Json;
}

namespace vorsim {

inline constexpr int journal_version = 2; // 1 had no first line of its own, and no bytes

// What a journal begins with.
std::string journal_head(const std::string& time, std::uint64_t seed, bool show_secrets);

enum class Extent : std::uint8_t { whole, without_bytes };
std::string json_line(const Record& record, Extent extent = Extent::whole);

// A line that was read.
struct Line {
    std::string text{};                   // as it came
    std::optional<std::string> version{}; // a journal begins, of this one
    Record record{};                      // else
    std::string damage{};                 // what is wrong with it
    bool complete = true;                 // a message says where it came from, where it went, and what it is
};
// Throws a JsonError for what is no JSON object.
Line read_line(std::string_view text);
// The same line as vorsim writes it, whoever wrote it.
std::string rewritten(const Line& line);

vor::Json json_of(const std::vector<Value>& values);
// Throws a JsonError for what is neither text nor whole number, nor a list of those.
std::variant<Scalar, List> data_of(const vor::Json& json);

} // namespace vorsim
