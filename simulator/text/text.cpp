#include "text/text.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include <fmt/format.h>

namespace vorsim {
namespace {

constexpr std::size_t longest_in_line = 80;

// The length of the UTF-8 character beyond ASCII that begins here; 0 for none
// and for control characters.
std::size_t character_length(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0xc3 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 0;
    if (length == 0 || text.size() < length) {
        return 0;
    }
    const auto second = static_cast<unsigned char>(text[1]);
    if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) || (first == 0xf0 && second < 0x90) ||
        (first == 0xf4 && second > 0x8f)) {
        return 0; // overlong, a surrogate, or beyond the last code point
    }
    const auto goes_on = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U; };
    return std::ranges::all_of(text.substr(1, length - 1), goes_on) ? length : 0;
}

std::string escaped_byte(char character)
{
    switch (character) {
    case '\n':
        return "\\n";
    case '\t':
        return "\\t";
    case '\r':
        return "\\r";
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    default:
        const auto byte = static_cast<unsigned char>(character);
        return byte < 0x20 || byte >= 0x7f ? fmt::format("\\x{:02x}", byte) : std::string(1, character);
    }
}

} // namespace

std::string hex(std::uint32_t id)
{
    return fmt::format("{:#x}", id);
}

std::string dotted(std::uint32_t address)
{
    std::array<std::uint8_t, 4> parts{};
    std::memcpy(parts.data(), &address, sizeof address);
    return fmt::format("{}.{}.{}.{}", parts[0], parts[1], parts[2], parts[3]);
}

std::string escaped(std::string_view text, std::size_t longest)
{
    std::string out;
    std::size_t characters = 0;
    for (std::size_t at = 0; at < text.size(); ++characters) {
        if (characters == longest) {
            return fmt::format("{}... ({} bytes)", out, text.size());
        }
        const std::size_t length = character_length(text.substr(at));
        out += length == 0 ? escaped_byte(text[at]) : std::string(text.substr(at, length));
        at += std::max<std::size_t>(length, 1);
    }
    return out;
}

std::string quoted(std::string_view text)
{
    return fmt::format("\"{}\"", escaped(text, longest_in_line));
}

std::string counted(std::uint64_t number, std::string_view what)
{
    return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

void print_line(std::FILE* to, const std::string& line)
{
    std::fputs(fmt::format("{}\n", line).c_str(), to);
    std::fflush(to);
}

} // namespace vorsim
