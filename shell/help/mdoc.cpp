#include "help/mdoc.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>

#include <fmt/core.h>

namespace vorcfg {

namespace {

constexpr std::size_t line_width = 78;

std::string escaped(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        out += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return out;
}

// A line of its own, that begins with what only a request begins with.
std::string line_of(std::string_view text)
{
    const bool request = text.starts_with('.') || text.starts_with('\'');
    return fmt::format("{}{}\n", request ? "\\&" : "", text);
}

// Behind a macro, short words and single signs may be macros too.
std::string arguments_of(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const bool told = word.size() == 1 || (word.size() <= 3 && std::isupper(static_cast<unsigned char>(word[0])));
        std::string plain;
        for (const char c : escaped(word)) {
            plain += c == '"' ? "\\(dq" : std::string(1, c);
        }
        const bool closes =
            std::string_view(".,:;?!)]").find(word.empty() ? ' ' : word.back()) != std::string_view::npos;
        out += fmt::format(" {}{}{}", told ? "\\&" : "", plain, closes ? "\\&" : "");
    }
    return out;
}

// The day that the build says, else today.
std::string day()
{
    const char* const given = std::getenv("SOURCE_DATE_EPOCH");
    const std::time_t when =
        given != nullptr ? static_cast<std::time_t>(std::strtoll(given, nullptr, 10)) : std::time(nullptr);
    std::tm parts{};
    gmtime_r(&when, &parts);
    char month[16];
    std::strftime(month, sizeof month, "%B", &parts);
    return fmt::format("{} {}, {}", month, parts.tm_mday, parts.tm_year + 1900);
}

std::string upper(std::string_view text)
{
    std::string out(text);
    std::ranges::transform(out, out.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return out;
}

} // namespace

Mdoc::Mdoc(std::string_view name, int section, std::string_view about)
{
    page_ = fmt::format(".Dd {}\n.Dt {} {}\n.Os\n.Sh NAME\n.Nm {}\n.Nd{}\n", day(), upper(name), section, name,
                        arguments_of(about));
}

Mdoc& Mdoc::section(std::string_view title)
{
    page_ += fmt::format(".Sh {}\n", upper(title));
    begins_ = true;
    return *this;
}

Mdoc& Mdoc::subsection(std::string_view title)
{
    page_ += fmt::format(".Ss{}\n", arguments_of(title));
    begins_ = true;
    return *this;
}

Mdoc& Mdoc::macro(std::string_view name, std::string_view arguments)
{
    page_ += fmt::format(".{}{}\n", name, arguments_of(arguments));
    begins_ = false;
    return *this;
}

Mdoc& Mdoc::paragraph(std::string_view words)
{
    if (!begins_) {
        page_ += ".Pp\n";
    }
    return text(words);
}

Mdoc& Mdoc::text(std::string_view text)
{
    std::string line;
    const auto end_line = [&] {
        page_ += line.empty() ? "" : line_of(line);
        line.clear();
    };
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(" \n"), text.size());
        const std::string word = escaped(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (word.empty()) {
            continue;
        }
        if (!line.empty() && line.size() + 1 + word.size() > line_width) {
            end_line();
        }
        line += (line.empty() ? "" : " ") + word;
        const std::size_t last = word.find_last_not_of("\")'");
        if (last != std::string::npos && last != 0 && (word[last] == '.' || word[last] == '?' || word[last] == '!')) {
            end_line();
        }
    }
    end_line();
    begins_ = false;
    return *this;
}

Mdoc& Mdoc::literal(std::string_view lines)
{
    page_ += ".Bd -literal -offset indent\n";
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        page_ += line_of(escaped(lines.substr(0, end)));
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    page_ += ".Ed\n";
    begins_ = false;
    return *this;
}

Mdoc& Mdoc::begin_list()
{
    page_ += ".Bl -tag -width Ds\n";
    return *this;
}

Mdoc& Mdoc::item(std::string_view tag, std::string_view words)
{
    page_ += fmt::format(".It Li{}\n", arguments_of(tag));
    return text(words);
}

Mdoc& Mdoc::end_list()
{
    page_ += ".El\n";
    begins_ = false;
    return *this;
}

Mdoc& Mdoc::see_also(std::initializer_list<std::pair<std::string_view, int>> pages)
{
    section("see also");
    std::size_t left = pages.size();
    for (const auto& [name, number] : pages) {
        page_ += fmt::format(".Xr {} {}{}\n", name, number, --left != 0 ? " ," : "");
    }
    return *this;
}

} // namespace vorcfg
