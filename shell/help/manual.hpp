// manual.hpp: the manual pages, printed from the rows, the headers and the tools' own help.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

std::vector<std::string> manual_pages(); // "vorcfg.1", "vorcfg-gpio.1", ...

// Of vorsim the help is read from standard input, if that is free. Throws a Complaint that names the nearest.
std::string manual(std::string_view page, bool standard_input);

} // namespace vorcfg
