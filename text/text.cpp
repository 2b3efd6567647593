#include "text/text.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include <fmt/core.h>

namespace vor {
namespace {

bool is_plain(char character)
{
    return character >= ' ' && character < 0x7f;
}

std::string in_hex(char character)
{
    return fmt::format("\\x{:02x}", static_cast<unsigned char>(character));
}

std::string escaped_byte(char character)
{
    constexpr std::string_view special = "\n\t\r\"\\";
    constexpr std::string_view letters = "ntr\"\\";
    if (const std::size_t at = special.find(character); at != special.npos) {
        return {'\\', letters[at]};
    }
    return is_plain(character) ? std::string(1, character) : in_hex(character);
}

std::string printable_byte(char character)
{
    return is_plain(character) || character == '\n' ? std::string(1, character) : in_hex(character);
}

std::string spelt(std::string_view text, std::size_t longest, std::string (*spelt_byte)(char))
{
    std::string out;
    std::size_t characters = 0;
    for (std::size_t at = 0; at < text.size(); ++characters) {
        if (characters == longest) {
            return fmt::format("{}... ({} bytes)", out, text.size());
        }
        const std::string_view character = text.substr(at, std::max<std::size_t>(character_length(text.substr(at)), 1));
        if (character.size() > 1 && is_visible(character)) {
            out += character;
        } else {
            std::ranges::for_each(character, [&](char byte) { out += spelt_byte(byte); });
        }
        at += character.size();
    }
    return out;
}

} // namespace

std::size_t character_length(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 0;
    if (length == 0 || text.size() < length) {
        return 0;
    }
    const auto second = static_cast<unsigned char>(text[1]);
    if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) || (first == 0xf0 && second < 0x90) ||
        (first == 0xf4 && second > 0x8f)) {
        return 0; // overlong, a surrogate, or beyond the last code point
    }
    return std::ranges::none_of(text.substr(1, length - 1), begins_character) ? length : 0;
}

bool is_visible(std::string_view character)
{
    if (is_plain(character[0])) {
        return true;
    }
    // UTF-8 sorts like the code points.
    static constexpr std::pair<std::string_view, std::string_view> hidden[] = {
        {{"", 0}, "\x1f"},
        {"\x7f", "\u009f"},   // to here the control characters
        {"\u00ad", "\u00ad"}, // a hyphen that shows only where a line ends
        {"\u061c", "\u061c"}, // marks of direction, here and below
        {"\u180e", "\u180e"}, // no width, here and below
        {"\u200b", "\u200b"},
        {"\u200e", "\u200f"},
        {"\u2028", "\u202e"}, // ends of line, then embeddings and overrides of the direction
        {"\u2060", "\u206f"}, // isolated directions among them
        {"\ufeff", "\ufeff"},
        {"\ufff9", "\ufffb"},
        {"\U000e0000", "\U000e007f"}, // tags
    };
    return std::ranges::none_of(
        hidden, [&](const auto& range) { return character >= range.first && character <= range.second; });
}

bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string escaped(std::string_view text, std::size_t longest)
{
    return spelt(text, longest, escaped_byte);
}

std::string quoted(std::string_view text, std::size_t longest)
{
    return fmt::format("\"{}\"", escaped(text, longest));
}

std::string printable(std::string_view text)
{
    return spelt(text, std::string_view::npos, printable_byte);
}

std::string hexadecimal(std::string_view bytes)
{
    std::string out;
    for (const char byte : bytes) {
        out += fmt::format("{}{:02x}", out.empty() ? "" : " ", static_cast<unsigned char>(byte));
    }
    return out;
}

std::string dotted(std::uint32_t address)
{
    std::array<std::uint8_t, 4> parts{};
    std::memcpy(parts.data(), &address, sizeof address);
    return fmt::format("{}.{}.{}.{}", parts[0], parts[1], parts[2], parts[3]);
}

std::string counted(std::uint64_t number, std::string_view what)
{
    return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

void print(std::FILE* to, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), to);
    std::fflush(to);
}

void print_line(std::FILE* to, std::string_view line)
{
    print(to, fmt::format("{}\n", line));
}

std::size_t characters_in(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(text, begins_character));
}

} // namespace vor
