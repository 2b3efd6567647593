// question.hpp: what is asked before a call is made.
#pragma once

#include <string_view>

namespace vorcfg {

// Whether someone sits there: standard input and standard output are a terminal.
bool at_terminal();

// y or yes; anything else, and an interrupt too, is a no.
bool agreed(std::string_view question);

} // namespace vorcfg
