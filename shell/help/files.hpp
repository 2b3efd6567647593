// files.hpp: the files whose names begin as typed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

// Sorted, a directory with a slash behind it; one that begins with a dot only where that is typed. Where `home` says
// so, ~/ is the home directory, as the shell will read it.
std::vector<std::string> paths_that_begin(std::string_view typed, bool home);

} // namespace vorcfg
