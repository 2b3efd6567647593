// nearest.hpp: suggestions for a name that is not known.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vor {

// In lower case, with dashes.
std::string folded(std::string_view name);

// The names with the fewest typing errors between them and this one: a wrong, extra or missing letter, or two swapped.
// None where all differ too much; never one that says the contrary, as activate does for deactivate.
std::vector<std::string> nearest(std::string_view name, std::span<const std::string> known);

// The names that contain this one and do not say the contrary.
std::vector<std::string> holding(std::string_view name, std::span<const std::string> known);

// "; did you mean A or B?"; without a name "; " and the other text, if there is one.
std::string suggestion(std::span<const std::string> names, std::string_view otherwise = {});

} // namespace vor
