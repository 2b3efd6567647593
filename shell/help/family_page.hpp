// family.hpp: a family's manual page.
#pragma once

#include <string>

#include "rows/row.hpp"

namespace vorcfg {

std::string family_manual(const Family& family);

} // namespace vorcfg
