// json.hpp: records as lines of JSON, in the journal and for watching clients.
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

namespace vorsim::record {

inline constexpr int journal_version = 2; // 1 had no header line and no bytes

// The first line of a journal.
std::string journal_head(const std::string& time, std::uint64_t seed, bool show_secrets);

enum class Extent : std::uint8_t { whole, without_bytes };
std::string json_line(const values::Record& record, Extent extent = Extent::whole);

// A line that was read.
struct Line {
    std::string text{};                   // as it was read
    std::optional<std::string> version{}; // in the first line of a journal
    values::Record record{};              // else
    std::string damage{};                 // what is wrong with it
    bool complete = true;                 // a message has its source, SAP and id
};
// Throws a JsonError for anything but a JSON object.
Line read_line(std::string_view text);
// The line as vorsim formats JSON.
std::string rewritten(const Line& line);

vor::Json json_of(const std::vector<values::Value>& values);
// Throws a JsonError for anything but a text, an integer or a list of those.
std::variant<values::Scalar, values::List> data_of(const vor::Json& json);

} // namespace vorsim::record
