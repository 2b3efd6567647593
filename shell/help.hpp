// help.hpp: what the rows say of themselves.
#pragma once

#include <string>

#include "commands.hpp"

namespace vorcfg {

std::string help();
std::string help(const Family& family);
std::string help(const Row& row);

// The call with its arguments, as it is typed.
std::string usage(const Row& row);

// Every call, one a line; as JSON one object per line.
std::string list(bool json);

} // namespace vorcfg
