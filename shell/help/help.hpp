// help.hpp: what there is to call, and how.
#pragma once

#include <string>
#include <string_view>

#include "input/command.hpp"
#include "rows/row.hpp"

namespace vorcfg {

std::string help();
std::string help(const Family& family);
std::string help(const Row& row);
std::string help(const Command& command);

// Every call, of one family where it is named, or of those that hold the word.
std::string list(const Family* family, bool json);
std::string search(std::string_view word, bool json);

} // namespace vorcfg
