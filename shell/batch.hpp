// batch.hpp: files of calls, one a line.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "plan.hpp"

namespace vorcfg {

// The words of one line. `"` opens a text in which \" and \\ stand for the
// character; # begins a comment. Throws a Complaint whose token is the column.
std::vector<Token> tokens_of(std::string_view line);

// Every call of a batch, checked whole. Throws a Complaint that lists every
// fault as FILE:LINE:COLUMN.
std::vector<Planned> plan_batch(std::string_view text, const std::string& name, const SecretSources& sources);

std::string read_batch(const std::string& path); // - is standard input

} // namespace vorcfg
