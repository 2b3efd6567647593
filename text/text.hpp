// text.hpp: texts and values for display. Bytes that are not UTF-8 and invisible characters never reach a terminal.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace vor {

inline constexpr std::string_view mask = "********"; // of a secret, whatever its length

bool is_utf8(std::string_view text);
// The length of the character of UTF-8 that begins the text; 0: none does.
std::size_t character_length(std::string_view text);
// False for a character that a terminal acts on, that reorders the text around it or that cannot be seen.
bool is_visible(std::string_view character);

// They become \n, \x1b and so on; a text of more than `longest` characters is cut, with its length after it.
std::string escaped(std::string_view text, std::size_t longest = std::string_view::npos);
// The same between double quotes.
std::string quoted(std::string_view text, std::size_t longest = std::string_view::npos);
// Line ends, quotes and backslashes remain.
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
template <class Texts>
std::string alternatives(const Texts& texts)
{
    std::string all;
    for (std::size_t left = texts.size(); const std::string_view text : texts) {
        if (!all.empty()) {
            all += left == 1 ? " or " : ", ";
        }
        all += text;
        left--;
    }
    return all;
}

// Whether a character of UTF-8 begins with this byte.
constexpr bool begins_character(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U;
}
// How many characters of UTF-8 the text has.
std::size_t characters_in(std::string_view text);

// Written and flushed; errors are left to the stream.
void print(std::FILE* to, std::string_view text);
void print_line(std::FILE* to, std::string_view line);

} // namespace vor
