// page.hpp: a family's reference page, printed from its rows, its header, and
// the calls themselves, made against the gateway that answers.
#pragma once

#include <string>
#include <string_view>

namespace vorcfg {

// The page of all families that a header declares. Throws a Complaint that names the examples that failed.
std::string page(std::string_view header);

} // namespace vorcfg
