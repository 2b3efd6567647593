// built_in.hpp: a file that is built into a tool.
#pragma once

#include <string_view>

namespace vor {

struct BuiltIn {
    std::string_view stem; // its name without the extension
    std::string_view text;
};

} // namespace vor
