// screen.hpp: a terminal's width and colours, and progress that is updated in place.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vor {

enum class Color : std::uint8_t { plain, green, red, yellow, dim };
enum class ColorWhen : std::uint8_t { automatic, always, never };

// By default a file or a pipe.
struct Screen {
    bool is_terminal = false;
    bool is_colored = false;
    std::size_t width = std::string::npos;

    std::string painted(std::string_view text, Color color) const;
};

// TERM=dumb, or not set: it cannot move its cursor.
bool is_dumb();

// COLUMNS overrides a terminal's width; NO_COLOR and TERM=dumb turn automatic colours off.
Screen screen_of(int descriptor, ColorWhen when);

// The lines of a text wrapped at blanks, each character one column wide; a longer word is cut.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);
// The same as one text, its lines ended, those after the first indented.
std::string paragraph(std::string_view text, const Screen& screen, std::string_view lead = {});

// A count on standard error, updated in place: only at a terminal, and once the work has taken a second.
class Progress {
public:
    explicit Progress(std::string_view what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { clear(); }

    // "calls made: 12 of 200"; without a total "lines checked: 12".
    void show(std::size_t done, std::size_t total = 0);
    void show_text(std::string_view text); // at once
    void clear();                          // before anything else is written

private:
    const std::string what_;
    const bool on_terminal_;
    std::chrono::steady_clock::time_point next_;
    bool is_shown_ = false;
};

} // namespace vor
