// nearest.hpp: which of the known names was meant by one that is not known.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vor {

// In small letters, with dashes.
std::string folded(std::string_view name);

// The names that the least slips of the pen lead to: a letter wrong, added, left out, or two
// swapped. None, where all are far away.
std::vector<std::string> nearest(std::string_view name, std::span<const std::string> known);

// The names that hold this one as a word or a part of one.
std::vector<std::string> holding(std::string_view name, std::span<const std::string> known);

// "; is it A or B?", or "; " and what else helps.
std::string suggestion(std::span<const std::string> names, std::string_view otherwise);

} // namespace vor
