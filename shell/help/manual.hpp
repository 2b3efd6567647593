// manual.hpp: the manual pages: those in pages/, with what the tables know filled in, and one of each family.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

std::vector<std::string> manual_pages(); // "vorcfg.1", "vorcfg-gpio.1", ...

// In mdoc. Throws a Complaint that names the nearest.
std::string manual(std::string_view page);

} // namespace vorcfg
