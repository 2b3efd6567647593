// screen.hpp: what is shown where somebody looks at it: a terminal's width and colours, a line that counts in place.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vor {

enum class Color : std::uint8_t { plain, green, red, yellow, dim };
enum class ColorWhen : std::uint8_t { automatic, always, never };

// The value of --color: "auto", "always" or "never".
std::optional<ColorWhen> color_when(std::string_view word);

// A file or a pipe, unless it says otherwise.
struct Screen {
    bool is_terminal = false;
    bool is_colored = false;
    std::size_t width = std::string::npos;

    std::string painted(std::string_view text, Color color) const;
};

// COLUMNS overrides a terminal's width; NO_COLOR and TERM=dumb turn automatic colours off.
Screen screen_of(int descriptor, ColorWhen when);

// The characters of a UTF-8 text; each is taken to fill one column.
std::size_t columns_of(std::string_view text);
// The lines of a text folded at blanks; a longer word is cut.
std::vector<std::string> folded(std::string_view text, std::size_t width);

// A count on standard error, updated in place: only at a terminal, and once the work has taken a second.
class Progress {
public:
    explicit Progress(std::string_view what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { clear(); }

    // "calls: 12 of 200"; without a total "lines: 12".
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
