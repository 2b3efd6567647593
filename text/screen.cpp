#include "text/screen.hpp"

#include <algorithm>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

#include <fmt/core.h>

#include "text/parse.hpp"
#include "text/text.hpp"

namespace vor {

namespace {

constexpr std::size_t usual_width = 80;

std::size_t width_of(int terminal)
{
    const char* const columns = std::getenv("COLUMNS");
    const std::size_t given = columns != nullptr ? number_in<std::size_t>(columns).value_or(0) : 0;
    if (given != 0) {
        return given;
    }
    winsize size{};
    return ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : usual_width;
}

// The bytes of the first characters.
std::size_t bytes_of(std::string_view text, std::size_t characters)
{
    std::size_t at = 0;
    while (at < text.size() && (characters != 0 || !begins_character(text[at]))) {
        characters -= begins_character(text[at]) ? 1 : 0;
        at++;
    }
    return at;
}

} // namespace

bool is_dumb()
{
    const char* const terminal = std::getenv("TERM");
    return terminal == nullptr || std::string_view(terminal) == "dumb";
}

std::string Screen::painted(std::string_view text, Color color) const
{
    static constexpr int codes[] = {0, 32, 31, 33, 2};
    return is_colored && color != Color::plain && !text.empty()
               ? fmt::format("\x1b[{}m{}\x1b[0m", codes[static_cast<std::size_t>(color)], text)
               : std::string(text);
}

Screen screen_of(int descriptor, ColorWhen when)
{
    Screen screen;
    screen.is_terminal = isatty(descriptor) == 1;
    const char* const no_color = std::getenv("NO_COLOR");
    const bool automatic = screen.is_terminal && !is_dumb() && (no_color == nullptr || *no_color == '\0');
    screen.is_colored = when == ColorWhen::always || (when == ColorWhen::automatic && automatic);
    screen.width = screen.is_terminal ? width_of(descriptor) : screen.width;
    return screen;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width)
{
    std::vector<std::string> lines;
    while (characters_in(text) > width) {
        const std::size_t end = bytes_of(text, std::max<std::size_t>(width, 1));
        const std::size_t blank = text.rfind(' ', end);
        const bool at_blank = blank != text.npos && blank != 0;
        lines.emplace_back(text.substr(0, at_blank ? blank : end));
        text.remove_prefix(at_blank ? blank + 1 : end);
    }
    lines.emplace_back(text);
    return lines;
}

std::string paragraph(std::string_view text, const Screen& screen, std::string_view lead)
{
    constexpr std::string_view indentation = "  ";
    std::string lines;
    for (const std::string& line : wrapped(text, screen.width - std::min(screen.width, indentation.size()))) {
        lines += fmt::format("{}{}\n", lines.empty() ? lead : indentation, line);
    }
    return lines;
}

Progress::Progress(std::string_view what)
    : what_(what), on_terminal_(isatty(STDERR_FILENO) == 1 && !is_dumb()),
      next_(std::chrono::steady_clock::now() + std::chrono::seconds(1))
{
}

void Progress::show(std::size_t done, std::size_t total)
{
    constexpr auto often = std::chrono::milliseconds(100);
    const auto now = std::chrono::steady_clock::now();
    if (on_terminal_ && now >= next_) {
        next_ = now + often;
        show_text(fmt::format("{}: {}{}", what_, done, total != 0 ? fmt::format(" of {}", total) : ""));
    }
}

void Progress::show_text(std::string_view text)
{
    if (on_terminal_) {
        print(stderr, fmt::format("\r{}\x1b[K", text));
        is_shown_ = true;
    }
}

void Progress::clear()
{
    if (is_shown_) {
        print(stderr, "\r\x1b[K");
        is_shown_ = false;
    }
}

} // namespace vor
