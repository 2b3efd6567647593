// screen.hpp: what a terminal can show: colours, and how many columns there are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vor {

enum class Color : std::uint8_t { automatic, always, never };
// "auto", "always" or "never"; none for anything else.
std::optional<Color> color_named(std::string_view name);

bool is_terminal(int descriptor);
// At a terminal, unless NO_COLOR is set or TERM is dumb, or as the choice says.
bool has_color(int descriptor, Color choice);
// COLUMNS where that is set, else the terminal's width; 0: lines are not folded.
std::size_t columns_of(int descriptor);

enum class Paint : std::uint8_t { none = 0, dim = 2, red = 31, green = 32, yellow = 33 };
std::string painted(std::string_view text, Paint paint, bool color);

// Characters, as far as UTF-8 goes.
std::size_t width_of(std::string_view text);
// Adds the words behind what ends at the column, which moves on; breaks lines at blanks before they get longer than
// the width (0: never), and indents what follows.
void append_folded(std::string& line, std::size_t& column, std::string_view words, std::size_t indent,
                   std::size_t width);

} // namespace vor
