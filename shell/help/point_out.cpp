#include <unistd.h>

#include <fmt/core.h>

#include "help/help.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "rows/reading.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorcfg::help {

namespace {

struct Excerpt {
    std::string line;
    std::size_t at = std::string::npos; // what the caret points at
};

Excerpt typed_call(const input::InputError& error, std::span<const input::Word> words)
{
    Excerpt excerpt{"  "};
    for (std::size_t i = 0; i < words.size(); i++) {
        excerpt.line += i == 0 ? "" : " ";
        excerpt.at = i == error.word ? excerpt.line.size() : excerpt.at;
        excerpt.line += vor::printable(vor::typed(words[i].text));
    }
    return excerpt;
}

Excerpt usage(const input::InputError& error, const rows::Row& row)
{
    Excerpt excerpt{fmt::format("usage: {}", rows::usage_of(row))};
    std::size_t name = 0;
    for (const rows::Argument& argument : row.arguments()) {
        const std::string shown = rows::placeholder(argument);
        const std::size_t found = excerpt.line.find(shown, name);
        name = found != std::string::npos ? found + shown.size() : name; // a name may begin another
        excerpt.at = argument.name == error.argument ? found : excerpt.at;
    }
    return excerpt;
}

} // namespace

void point_out(input::InputError& error, std::span<const input::Word> words)
{
    const std::size_t widest = help_width(STDERR_FILENO);
    const rows::Row* const row = words.size() > 1 ? rows::row_named(words[0].text, words[1].text) : nullptr;
    if (row == nullptr) {
        return;
    }
    const bool about_argument = error.word != input::InputError::no_word && error.word >= rows::Reading::first_word;
    if (error.exit != input::exit_usage || !about_argument) {
        return;
    }
    if (error.hint.empty()) {
        error.hint = fmt::format("vorcfg help {}", row->full_name());
    }
    Excerpt shown = typed_call(error, words);
    if (error.word >= words.size() || rows::may_hold_secret(*row, words) || vor::characters_in(shown.line) > widest) {
        shown = usage(error, *row);
    }
    error.excerpt = shown.line + '\n';
    if (shown.at != std::string::npos) {
        const std::size_t column = vor::characters_in(std::string_view{shown.line}.substr(0, shown.at));
        error.excerpt += column < widest ? fmt::format("{:>{}}\n", '^', column + 1) : "";
    }
}

} // namespace vorcfg::help
