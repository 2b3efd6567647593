#include "text/screen.hpp"

#include <algorithm>
#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

#include <fmt/core.h>

#include "text/parse.hpp"

namespace vor {

std::optional<Color> color_named(std::string_view name)
{
    constexpr std::string_view names[] = {"auto", "always", "never"};
    const auto* const found = std::ranges::find(names, name);
    return found != std::end(names) ? std::optional(Color(found - names)) : std::nullopt;
}

bool is_terminal(int descriptor)
{
    return isatty(descriptor) == 1;
}

bool has_color(int descriptor, Color choice)
{
    if (choice != Color::automatic) {
        return choice == Color::always;
    }
    const char* const none = std::getenv("NO_COLOR");
    const char* const term = std::getenv("TERM");
    return is_terminal(descriptor) && (none == nullptr || *none == '\0') &&
           (term == nullptr || std::string_view(term) != "dumb");
}

std::size_t columns_of(int descriptor)
{
    if (!is_terminal(descriptor)) {
        return 0;
    }
    const char* const columns = std::getenv("COLUMNS");
    if (const auto number = columns != nullptr ? number_in<unsigned>(columns) : std::nullopt) {
        return *number;
    }
    winsize size{};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::string painted(std::string_view text, Paint paint, bool color)
{
    return color && paint != Paint::none ? fmt::format("\x1b[{}m{}\x1b[0m", static_cast<int>(paint), text)
                                         : std::string(text);
}

std::size_t width_of(std::string_view text)
{
    const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U; };
    return static_cast<std::size_t>(std::ranges::count_if(text, begins));
}

void append_folded(std::string& line, std::size_t& column, std::string_view words, std::size_t indent,
                   std::size_t width)
{
    while (!words.empty()) {
        std::string_view word = words.substr(0, words.find(' ', words.find_first_not_of(' ')));
        words.remove_prefix(word.size());
        if (width > 0 && column > indent && column + width_of(word) > width) {
            word.remove_prefix(std::min(word.find_first_not_of(' '), word.size()));
            line += '\n' + std::string(indent, ' ');
            column = indent;
        }
        line += word;
        column += width_of(word);
    }
}

} // namespace vor
