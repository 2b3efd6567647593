// families.hpp: the rows of every family, and how they are found.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "rows/row.hpp"

namespace vorcfg {

std::span<const Family* const> families(); // in the order of their names

// Null, where there is none of that name.
const Family* family_named(std::string_view name);
const Row* row_named(std::string_view family, std::string_view name);

// A InputError that names the nearest name, where one is near.
const Family& wanted_family(std::string_view name);
const Row& wanted_row(std::string_view family, std::string_view name);

} // namespace vorcfg
