// docs.hpp: a family's reference page, printed from its rows, its header, and
// the calls themselves, made against the gateway that answers.
#pragma once

#include <filesystem>
#include <string>

namespace vorcfg {

std::string page(const std::string& stem, const std::filesystem::path& include_directory);

} // namespace vorcfg
