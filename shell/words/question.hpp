// question.hpp: yes or no, asked of whoever sits at the terminal.
#pragma once

#include <string>

namespace vorcfg {

bool is_interactive(); // standard input and output are a terminal

// False at anything but y or yes, and at the end of input.
bool confirmed_by_user(const std::string& question);

} // namespace vorcfg
