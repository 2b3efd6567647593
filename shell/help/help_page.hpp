// help_page.hpp: a tool's manual page, made of what it prints as its help.
#pragma once

#include <string>
#include <string_view>

namespace vorcfg {

std::string help_page(std::string_view tool, std::string_view help);

} // namespace vorcfg
