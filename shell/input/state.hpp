// state.hpp: where vorcfg keeps what is its user's.
#pragma once

#include <filesystem>

namespace vorcfg::input {

// vorcfg in $XDG_STATE_HOME, or in ~/.local/state; empty where there is neither.
std::filesystem::path state_directory();

// Whether the directory is there; made where it is missing, for its owner only.
bool make_private(const std::filesystem::path& directory);

} // namespace vorcfg::input
