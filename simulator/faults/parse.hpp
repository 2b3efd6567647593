// parse.hpp: rules as sentences.
//
//   WHO [CALL|ID] ["OBJECT"] [from SAP N] [Nth | every Nth | chance N%]: ACTION[, END]
//
// A rule that could never act is refused.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "faults/rule.hpp"
#include "text/parse.hpp"

namespace vorsim::faults {

// What is wrong with a rule, and at which column.
using RuleError = vor::WordError;

// Throws a RuleError.
Rule parse_rule(std::string_view line);

// All errors of a file, one FILE:LINE:COLUMN line each.
struct BadFile : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One rule per line; # begins a comment. Throws a BadFile, or a runtime_error if the file cannot be read.
std::vector<Rule> read_rules(const std::string& file);

} // namespace vorsim::faults
