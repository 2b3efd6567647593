// text.hpp: a file that is built in.
#pragma once

#include <string_view>

namespace vorcfg {

struct Text {
    std::string_view stem;
    std::string_view text;
};

} // namespace vorcfg
