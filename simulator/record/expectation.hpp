// expectation.hpp: a message that is expected, written as vorsim's own lines show it.
//
//   [TIME] [VERDICT]  MANAGER  CALL  OBJECT: NAME=VALUE...  [xN | at least N | never]
//
// Columns are separated by two or more spaces. Times, SAPs, ids and notes are ignored, and a verdict that is left out
// may be any. As a value * is any, ******** any secret; * in place of the object, or of the values that are left, means
// any. A complaint's line, and konfd's, is expected as it is printed.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "text/parse.hpp"
#include "values/record.hpp"

namespace vorsim::record {

struct Count {
    std::uint32_t least = 1;
    std::optional<std::uint32_t> most = 1; // none: any number

    bool is_never() const { return most == 0U; }
};

struct Expectation {
    std::string text{};   // as it was written, without its count
    std::size_t line = 0; // of its file, from 1 on
    Count count{};
    std::string verdict{}; // empty: any

    enum class Kind : std::uint8_t { message, konfd, complaint };
    Kind kind{};
    std::optional<std::uint16_t> sap{}; // none: konfd, or any manager
    std::string call{};                 // may hold *; a complaint's second column
    std::optional<std::string> object{};
    std::string_view object_pattern{}; // of its row
    struct Value {
        std::string name;
        std::string text;
    };
    std::vector<Value> values{};
    bool any_values = false; // besides those
    std::string rest{};      // of konfd, or of a complaint; *: any

    bool matches(const values::Record& record) const;
};

// Whether an object and values must be given.
enum class Detail : std::uint8_t { whole, as_wanted };
// Throws a WordError; a blank line or a comment is none.
std::optional<Expectation> parse_expectation(std::string_view line, Detail detail = Detail::whole);

// All errors, one FILE:LINE:COLUMN line each.
struct BadExpectations : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// Throws a BadExpectations.
std::vector<Expectation> read_expectations(std::string_view text, const std::string& file);

// The line that expects the record, without what differs from run to run.
std::string expectation_of(const values::Record& record);

} // namespace vorsim::record
