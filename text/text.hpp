// text.hpp: texts and values made fit to be shown. What is no UTF-8, and
// control characters of either set, never reach a terminal.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace vor {

inline constexpr std::string_view mask = "********"; // of a secret, whatever its length

bool is_utf8(std::string_view text);

// They become \n, \x1b and the like; beyond `longest` characters the rest is told by its length.
std::string escaped(std::string_view text, std::size_t longest = std::string_view::npos);
// The same between double quotes.
std::string quoted(std::string_view text, std::size_t longest = std::string_view::npos);
// Lines stay lines, quotes and backslashes themselves.
std::string printable(std::string_view text);

std::string hexadecimal(std::string_view bytes); // "0a ff"
// An IPv4 address in network byte order, as it lies in memory.
std::string dotted(std::uint32_t address);
// "1 message", "2 messages"
std::string counted(std::uint64_t number, std::string_view what);

template <class Texts>
std::string joined(const Texts& texts, std::string_view between)
{
    std::string all;
    for (const std::string_view text : texts) {
        all += all.empty() ? "" : between;
        all += text;
    }
    return all;
}

// "a, b or c"
std::string either(std::span<const std::string> texts);

// Written at once; a reader that is gone stops nobody.
void print(std::FILE* to, std::string_view text);
void print_line(std::FILE* to, std::string_view line);

} // namespace vor
