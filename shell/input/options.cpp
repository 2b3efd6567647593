#include "input/options.hpp"

#include <algorithm>
#include <chrono>
#include <type_traits>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "input/secret.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorcfg::input {

namespace {

// The number in the text, which must be within the limits.
std::uint32_t within(std::uint32_t least, std::uint32_t most, std::optional<std::uint32_t> number, const OptionRow& row,
                     std::string_view text, std::string_view unit = {})
{
    if (!number || *number < least || *number > most) {
        throw InputError{fmt::format("{} must be {} to {}{}, not {}", row.name, least, most, unit, vor::quoted(text))};
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
    options.*Member = within(1, day, whole, row, value, " seconds");
}

void take_sap(Options& options, const OptionRow& row, std::string_view value)
{
    options.sap = static_cast<std::uint16_t>(within(0, UINT16_MAX, vor::number_in<std::uint32_t>(value), row, value));
}

void take_line(Options& options, const OptionRow& row, std::string_view value)
{
    options.from = within(1, UINT32_MAX, vor::number_in<std::uint32_t>(value), row, value);
}

void take_color(Options& options, const OptionRow&, std::string_view value)
{
    options.color = vor::color_when(value);
}

void take_password(Options& options, const OptionRow& row, std::string_view value)
{
    options.password = row.value.empty() ? Word{{"-"}} : word_of_file(value);
}

constexpr OptionRow rows[] = {
    {{"--dry-run", "", "show the exact messages and send nothing; needs no gateway"},
     take<&Options::dry_run>,
     "a call, batch",
     true,
     true},
    {{"--trace", "", "show each message and its answer on standard error"}, take<&Options::trace>},
    {{"--json", "", "print everything as JSON, one object per line"}, take<&Options::json>},
    {{"--yes", "", "ask nothing; make calls that require it"}, take<&Options::yes>, {}, true, true},
    {{"--sap", "N", "bind this endpoint; default: the first free one from 0x1000 on"}, take_sap},
    {{"--password-file", "FILE", "read the call's secret argument from FILE"}, take_password},
    {{"--password-stdin", "", "read the call's secret argument from standard input"}, take_password},
    {{"--keep-going", "", "continue after a failed call"}, take<&Options::keep_going>, "batch, apply", false, true},
    {{"--timeout", "SECONDS", "treat a call that takes longer as unknown"},
     take_seconds<&Options::timeout>,
     "batch, apply, revert, serve",
     false,
     true},
    {{"--set", "NAME=VALUE", "replace ${NAME} in the file with VALUE"},
     take<&Options::sets>,
     "batch, check, plan, apply"},
    {{"--vars", "FILE", "read variables from FILE: NAME=VALUE lines or a .csv spreadsheet"},
     take<&Options::vars>,
     "batch, check, plan, apply",
     true},
    {{"--row", "COLUMN=VALUE", "take this row of the spreadsheet; check without it takes all rows"},
     take<&Options::rows>,
     "batch, check, plan, apply"},
    {{"--allow-unused", "", "allow variables in the --vars files that FILE does not use"},
     take<&Options::allow_unused>,
     "batch, check, plan, apply",
     false,
     true},
    {{"--journal", "FILE", "keep what was accepted in FILE, or in a folder, not beside the file of calls"},
     take<&Options::journal>,
     "plan, apply",
     false,
     true},
    {{"--gateway", "NAME", "name the gateway; its journal is NAME.journal"},
     take<&Options::gateway>,
     "plan, apply",
     false,
     true},
    {{"--from", "LINE", "start at this line"}, take_line, "plan, apply", false, true},
    {{"--only", "FAMILY", "take only the calls of one family"}, take<&Options::only>, "plan, apply", false, true},
    {{"--confirm", "SECONDS", "revert what apply changed unless confirmed in time"},
     take_seconds<&Options::confirm>,
     "apply",
     false,
     true},
    {{"--retry-unknown", "", "make calls again whose outcome is unknown"},
     take<&Options::retry_unknown>,
     "apply",
     false,
     true},
    {{"--skip-unknown", "", "leave out calls whose outcome is unknown"},
     take<&Options::skip_unknown>,
     "apply",
     false,
     true},
    {{"--resend-secrets", "", "make accepted calls with a secret again"},
     take<&Options::resend_secrets>,
     "plan, apply",
     false,
     true},
    {{"--all", "", "make every selected line, whatever the journal says; for a gateway that was reset or replaced"},
     take<&Options::all>,
     "plan, apply",
     false,
     true},
    {{"--expired", "", "revert what nobody confirmed in time, in journals and folders"},
     take<&Options::expired>,
     "revert"},
    {{"--html", "", "print the report as a page for a browser or a printer"}, take<&Options::html>, "report"},
    {{"--color", "WHEN", "colour the output: auto (at a terminal), always or never"}, take_color},
    {{"--help", "", "show help, also of a command, family or call; -h: in brief"}, take<&Options::help>},
    {{"--version", "", "show the version"}, take<&Options::version>},
};

[[noreturn]] void fail_unknown(std::string_view name)
{
    std::vector<std::string> known;
    for (const OptionRow& row : rows) {
        known.emplace_back(row.name);
    }
    const std::vector<std::string> near = vor::nearest(name, known);
    throw InputError{.text = fmt::format("unknown option {}{}", vor::quoted(name), vor::suggestion(near)),
                     .hint = near.empty() ? "put -- before an argument that begins with two dashes" : ""};
}

std::vector<std::string_view> commands_of(const OptionRow& row)
{
    std::vector<std::string_view> commands;
    for (std::string_view left = row.commands; !left.empty();) {
        const std::size_t end = std::min(left.find(", "), left.size());
        commands.push_back(left.substr(0, end));
        left.remove_prefix(std::min(end + 2, left.size()));
    }
    return commands;
}

// `konfd query` reads its own options.
bool has_own_options(const std::vector<Word>& words)
{
    return words.size() >= 2 && words[0].text == "konfd" && words[1].text == "query";
}

// Null where the call reads the option itself.
const OptionRow* row_named(std::string_view name, const std::vector<Word>& words)
{
    const auto row = std::ranges::find(rows, name, &OptionRow::name);
    const bool own = has_own_options(words);
    if (row == std::end(rows) && !own) {
        fail_unknown(name);
    }
    return row == std::end(rows) || (own && !takes_option(*row, a_call)) ? nullptr : row;
}

} // namespace

bool takes_option(const OptionRow& row, std::string_view command)
{
    const std::vector<std::string_view> commands = commands_of(row);
    return commands.empty() || std::ranges::find(commands, command) != commands.end();
}

std::span<const OptionRow> option_rows()
{
    return rows;
}

std::vector<Word> words_of(std::span<char* const> arguments)
{
    std::vector<Word> typed;
    for (const char* const argument : arguments) {
        typed.push_back({{.text = argument, .named = vor::named_length(argument)}});
    }
    return typed;
}

void take_options(std::vector<Word> typed, Options& options)
{
    bool over = false;
    std::optional<InputError> wrong;
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
        try {
            const vor::OptionWords option(word.text);
            const OptionRow* const row =
                over || word.quoted || !dashed ? nullptr : row_named(option.name, options.words);
            if (row == nullptr) {
                options.words.push_back(std::move(word));
                continue;
            }
            const std::string* const next = used < typed.size() ? &typed[used].text : nullptr;
            const std::string_view value = option.value_of(*row, next, used);
            row->take(options, *row, value);
            options.brief = options.brief || word.text == "-h";
            options.given.push_back(row);
        } catch (const vor::OptionError& error) {
            wrong = wrong.value_or(InputError{error.what()});
        } catch (const InputError& error) {
            wrong = wrong.value_or(error);
        }
    }
    if (wrong) {
        throw InputError(*wrong);
    }
}

void check_given(const Options& options, std::string_view command)
{
    for (const OptionRow* const row : options.given) {
        if (!takes_option(*row, command)) {
            throw InputError{
                fmt::format("{} is for {}, not for {}", row->name, vor::alternatives(commands_of(*row)), command)};
        }
    }
}

} // namespace vorcfg::input
