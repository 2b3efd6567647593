// names.hpp: rows and arguments in words, for every page that shows them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rows/row.hpp"

namespace vorcfg {

std::string usage_of(const Row& row);                     // "gpio set-value port_num value"
std::string summary_of(const Row& row);                   // in one sentence
std::vector<std::string_view> remarks_of(const Row& row); // what its marks mean to who makes it
std::string_view type_name(const Argument& argument);

// What is accepted of a number or a text: "0 to 255", "0 to 1, or off, on", "error, warning".
std::string accepted(const Argument& argument);

// "number, 0 to 255; never sent"
std::string kind_text(const Argument& argument);

} // namespace vorcfg
