// text.hpp: how values look in lines.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace vorsim {

inline constexpr std::string_view masked = "********";

std::string hex(std::uint32_t id);
// An IPv4 address in network byte order, as it lies in memory.
std::string dotted(std::uint32_t address);
// Control characters and bytes that are no UTF-8 become \n, \x1b and the like;
// beyond `longest` characters the rest is told by its length.
std::string escaped(std::string_view text, std::size_t longest = std::string_view::npos);
// The same in double quotes, abbreviated for a line.
std::string quoted(std::string_view text);
// "1 message", "2 messages"
std::string counted(std::uint64_t number, std::string_view what);

// Written at once; a reader that is gone stops nobody.
void print_line(std::FILE* to, const std::string& line);

} // namespace vorsim
