#include "input/options.hpp"

#include <algorithm>
#include <chrono>
#include <type_traits>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"

namespace vorcfg {

namespace {

// The number that the text stands for, if it stands for one within these bounds.
std::uint32_t within(std::uint32_t least, std::uint32_t most, std::optional<std::uint32_t> number, const OptionRow& row,
                     std::string_view text, std::string_view what)
{
    if (!number || *number < least || *number > most) {
        throw InputError{
            fmt::format("{}: \"{}\" is no {}; a number from {} to {} is wanted", row.name, text, what, least, most)};
    }
    return *number;
}

// A flag, a text, or one more of them.
template <auto Member>
void take(Options& options, const OptionRow&, std::string_view value)
{
    auto& taken = options.*Member;
    if constexpr (std::is_same_v<decltype(taken), bool&>) {
        taken = true;
    } else if constexpr (std::is_same_v<decltype(taken), std::string&>) {
        taken = value;
    } else {
        taken.emplace_back(value);
    }
}

template <auto Member>
void take_seconds(Options& options, const OptionRow& row, std::string_view value)
{
    constexpr std::chrono::seconds second(1);
    constexpr unsigned day = 86400;
    const auto time = vor::time_in(value, vor::Bare::seconds);
    std::optional<unsigned> whole;
    if (time && *time % second == time->zero()) {
        whole = static_cast<unsigned>(*time / second);
    }
    options.*Member = within(1, day, whole, row, value, "number of seconds");
}

void take_sap(Options& options, const OptionRow& row, std::string_view value)
{
    options.sap =
        static_cast<std::uint16_t>(within(0, UINT16_MAX, vor::number_in<std::uint32_t>(value), row, value, "SAP"));
}

void take_line(Options& options, const OptionRow& row, std::string_view value)
{
    options.from = within(1, UINT32_MAX, vor::number_in<std::uint32_t>(value), row, value, "line");
}

void take_color(Options& options, const OptionRow& row, std::string_view value)
{
    const auto when = vor::color_when(value);
    if (!when) {
        throw InputError{fmt::format("{} must be auto, always or never, not \"{}\"", row.name, value)};
    }
    options.color = *when;
}

void take_password(Options& options, const OptionRow& row, std::string_view value)
{
    options.password = Word{{row.value.empty() ? "-" : fmt::format("@{}", value)}};
}

constexpr OptionRow rows[] = {
    {{"--json", "", "one JSON object per call, and per complaint"}, take<&Options::json>},
    {{"--trace", "", "show each message and its answer on standard error"}, take<&Options::trace>},
    {{"--dry-run", "", "show the exact messages, send nothing; needs no gateway"},
     take<&Options::dry_run>,
     "a call, batch"},
    {{"--sap", "N", "the shell's own endpoint; by default a free one from 0x1000 up"}, take_sap},
    {{"--yes", "", "for a call that wants to be confirmed; ask nothing"}, take<&Options::yes>},
    {{"--keep-going", "", "go on with a batch after a failure"}, take<&Options::keep_going>, "batch, apply"},
    {{"--timeout", "SECONDS", "a call that takes longer is unknown"},
     take_seconds<&Options::timeout>,
     "batch, apply, revert"},
    {{"--set", "NAME=VALUE", "what ${NAME} stands for in a batch file"},
     take<&Options::sets>,
     "batch, check, plan, apply"},
    {{"--vars", "FILE", "the same from a file, one NAME=VALUE a line"},
     take<&Options::vars>,
     "batch, check, plan, apply"},
    {{"--journal", "FILE", "what a gateway accepted; by default the batch file's name and .journal"},
     take<&Options::journal>,
     "plan, apply"},
    {{"--gateway", "NAME", "the gateway that the journal is of; kept there"}, take<&Options::gateway>, "plan, apply"},
    {{"--from", "LINE", "plan and apply from this line on"}, take_line, "plan, apply"},
    {{"--only", "FAMILY", "plan and apply the calls of one family"}, take<&Options::only>, "plan, apply"},
    {{"--retry-unknown", "", "make again what was begun and has no verdict"}, take<&Options::retry_unknown>, "apply"},
    {{"--skip-unknown", "", "leave out what was begun and has no verdict"}, take<&Options::skip_unknown>, "apply"},
    {{"--resend-secrets", "", "make accepted calls with a secret again"},
     take<&Options::resend_secrets>,
     "plan, apply"},
    {{"--confirm", "SECONDS", "take back what apply changed, unless it is confirmed in this time"},
     take_seconds<&Options::confirm>,
     "apply"},
    {{"--html", "", "a report as a page for a browser or a printer"}, take<&Options::html>, "report"},
    {{"--password-file", "FILE", "take the call's secret argument from a file"}, take_password},
    {{"--password-stdin", "", "take the call's secret argument from standard input"}, take_password},
    {{"--color", "WHEN", "colour the output: auto (at a terminal), always or never"}, take_color},
    {{"--help", "", "help, also on a family, a call or a command"}, take<&Options::help>},
    {{"--version", "", "the version"}, take<&Options::version>},
};

[[noreturn]] void complain_unknown(std::string_view name)
{
    std::vector<std::string> known;
    for (const OptionRow& row : rows) {
        known.emplace_back(row.name);
    }
    throw InputError{
        fmt::format("unknown option {}{}", name,
                    vor::suggestion(vor::nearest(name, known), "put -- before a text that begins with two dashes"))};
}

constexpr std::string_view a_call = "a call";

bool means_something(const OptionRow& row, std::string_view command)
{
    return row.commands.empty() ||
           fmt::format(", {}, ", row.commands).find(fmt::format(", {}, ", command)) != std::string::npos;
}

// `konfd query` has options of its own.
bool has_own_options(const std::vector<Word>& words)
{
    return words.size() >= 2 && words[0].text == "konfd" && words[1].text == "query";
}

// Null, where it is a word of a call with options of its own.
const OptionRow* row_named(std::string_view name, const std::vector<Word>& words)
{
    const auto row = std::ranges::find(rows, name, &OptionRow::name);
    const bool own = has_own_options(words);
    if (row == std::end(rows) && !own) {
        complain_unknown(name);
    }
    return row == std::end(rows) || (own && !means_something(*row, a_call)) ? nullptr : row;
}

} // namespace

std::span<const OptionRow> option_rows()
{
    return rows;
}

Options options_of(std::span<char* const> arguments)
{
    std::vector<Word> typed;
    for (const char* const argument : arguments) {
        typed.push_back({{.text = argument, .named = vor::named_length(argument)}});
    }
    return options_of(std::move(typed), {});
}

Options options_of(std::vector<Word> typed, Options options)
try {
    bool over = false;
    options.given.clear();
    for (std::size_t used = 1; used <= typed.size(); used++) {
        Word& word = typed[used - 1];
        if (!over && !word.quoted && word.text == "--") {
            over = true;
            continue;
        }
        // a negative number, or - for standard input, is a word
        const bool dashed =
            word.text.starts_with("--") || word.text == "-h" || (word.text.starts_with('-') && options.words.empty());
        const vor::OptionWords option(word.text);
        const OptionRow* const row = over || word.quoted || !dashed ? nullptr : row_named(option.name, options.words);
        if (row == nullptr) {
            options.words.push_back(std::move(word));
            continue;
        }
        const std::string* const next = used < typed.size() ? &typed[used].text : nullptr;
        if (!row->value.empty() && !option.value && next == nullptr) {
            throw InputError{fmt::format("{}: its value is missing", row->name)};
        }
        const std::string_view value = option.value_of(*row, next, used);
        if (!row->value.empty() && value.empty()) {
            throw InputError{fmt::format("{}: its value is empty", row->name)};
        }
        row->take(options, *row, value);
        options.given.push_back(row);
    }
    return options;
} catch (const vor::OptionError& error) {
    throw InputError{error.what()};
}

void check_given(const Options& options, std::string_view command)
{
    for (const OptionRow* const row : options.given) {
        if (!means_something(*row, command)) {
            throw InputError{fmt::format("{} is for {}, not for {}", row->name, row->commands, command)};
        }
    }
}

} // namespace vorcfg
