// families.hpp: the rows of every family, and how to find them.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "rows/row.hpp"

namespace vorcfg::rows {

std::span<const Family* const> families(); // in the order of their names

// Null, where there is none of that name.
const Family* family_named(std::string_view name);
const Row* row_named(std::string_view family, std::string_view name);

// Throw an InputError that suggests similar names. Where a command may come first too, commands are suggested as well.
enum class Expected : bool { family, command_or_family };
const Family& require_family(std::string_view name, Expected expected = Expected::family);
const Row& require_row(std::string_view family, std::string_view name, Expected expected = Expected::family);

} // namespace vorcfg::rows
