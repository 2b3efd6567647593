#include "input/options.hpp"

#include <algorithm>
#include <chrono>

#include <fmt/core.h>

#include "input/complaint.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"

namespace vorcfg {

namespace {

constexpr OptionRow rows[] = {
    {{"--json", "", "one JSON object per call, and per complaint"}, &Options::json},
    {{"--trace", "", "show each message and its answer on standard error"}, &Options::trace},
    {{"--dry-run", "", "show the exact messages, send nothing; needs no gateway"}, &Options::dry_run, "a call, batch"},
    {{"--sap", "N", "the shell's own endpoint; by default a free one from 0x1000 up"}},
    {{"--yes", "", "for a call that wants to be confirmed; ask nothing"}, &Options::yes},
    {{"--keep-going", "", "go on with a batch after a failure"}, &Options::keep_going, "batch, apply"},
    {{"--timeout", "SECONDS", "a call that takes longer is unknown"}, nullptr, "batch, apply, revert"},
    {{"--set", "NAME=VALUE", "what ${NAME} stands for in a batch file"}, nullptr, "batch, check, plan, apply"},
    {{"--vars", "FILE", "the same from a file, one NAME=VALUE a line"}, nullptr, "batch, check, plan, apply"},
    {{"--journal", "FILE", "what a gateway accepted; by default the batch file's name and .journal"},
     nullptr,
     "plan, apply"},
    {{"--gateway", "NAME", "the gateway that the journal is of; kept there"}, nullptr, "plan, apply"},
    {{"--from", "LINE", "plan and apply from this line on"}, nullptr, "plan, apply"},
    {{"--only", "FAMILY", "plan and apply the calls of one family"}, nullptr, "plan, apply"},
    {{"--retry-unknown", "", "make again what was begun and has no verdict"}, &Options::retry_unknown, "apply"},
    {{"--skip-unknown", "", "leave out what was begun and has no verdict"}, &Options::skip_unknown, "apply"},
    {{"--resend-secrets", "", "make accepted calls with a secret again"}, &Options::resend_secrets, "plan, apply"},
    {{"--confirm", "SECONDS", "take back what apply changed, unless it is confirmed in this time"}, nullptr, "apply"},
    {{"--html", "", "a report as a page for a browser or a printer"}, &Options::html, "report"},
    {{"--password-file", "FILE", "take the call's secret argument from a file"}},
    {{"--password-stdin", "", "take the call's secret argument from standard input"}},
    {{"--help", "", "help, also on a family, a call or a command"}, &Options::help},
    {{"--version", "", "the version"}, &Options::version},
};

} // namespace

std::span<const OptionRow> option_rows()
{
    return rows;
}

namespace {

[[noreturn]] void complain_number(const OptionRow& row, std::string_view text, std::string_view what,
                                  std::uint32_t least, std::uint32_t most)
{
    throw Complaint{
        fmt::format("{}: \"{}\" is no {}; a number from {} to {} is wanted", row.name, text, what, least, most)};
}

std::uint32_t number_in(const OptionRow& row, std::string_view text, std::string_view what, std::uint32_t least,
                        std::uint32_t most)
{
    const auto number = vor::number_in<std::uint32_t>(text);
    if (!number || *number < least || *number > most) {
        complain_number(row, text, what, least, most);
    }
    return *number;
}

unsigned seconds_in(const OptionRow& row, std::string_view text)
{
    using std::chrono::seconds;
    constexpr unsigned day = 86400;
    const auto time = vor::time_in(text, vor::Bare::seconds);
    if (!time || time->count() == 0 || *time % seconds(1) != seconds(0)) {
        complain_number(row, text, "number of seconds", 1, day);
    }
    return static_cast<unsigned>(std::chrono::duration_cast<seconds>(*time).count());
}

void take(Options& options, const OptionRow& row, std::string_view value)
{
    if (row.flag != nullptr) {
        options.*row.flag = true;
    } else if (row.name == "--sap") {
        options.sap = static_cast<std::uint16_t>(number_in(row, value, "SAP", 0, UINT16_MAX));
    } else if (row.name == "--timeout") {
        options.timeout = seconds_in(row, value);
    } else if (row.name == "--confirm") {
        options.confirm = seconds_in(row, value);
    } else if (row.name == "--set") {
        options.sets.emplace_back(value);
    } else if (row.name == "--vars") {
        options.vars.emplace_back(value);
    } else if (row.name == "--journal") {
        options.journal = value;
    } else if (row.name == "--gateway") {
        options.gateway = value;
    } else if (row.name == "--from") {
        options.from = number_in(row, value, "line", 1, UINT32_MAX);
    } else if (row.name == "--only") {
        options.only = value;
    } else if (row.name == "--password-file") {
        options.password = Word{{fmt::format("@{}", value)}};
    } else {
        options.password = Word{{"-"}};
    }
}

[[noreturn]] void complain_unknown(std::string_view name)
{
    std::vector<std::string> known;
    for (const OptionRow& row : rows) {
        known.emplace_back(row.name);
    }
    throw Complaint{
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

std::vector<std::string_view> texts_of(const std::vector<Word>& words)
{
    std::vector<std::string_view> texts;
    for (const Word& word : words) {
        texts.push_back(word.text);
    }
    return texts;
}

} // namespace

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
    const std::vector<std::string_view> texts = texts_of(typed);
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
        if (!row->value.empty() && !option.value && used == typed.size()) {
            throw Complaint{fmt::format("{}: its value is missing", row->name)};
        }
        take(options, *row, option.value_of(*row, std::span(texts).subspan(used), used));
        options.given.push_back(row);
    }
    return options;
} catch (const vor::OptionError& error) {
    throw Complaint{error.what()};
}

void check_given(const Options& options, std::string_view command)
{
    for (const OptionRow* const row : options.given) {
        if (!means_something(*row, command)) {
            throw Complaint{fmt::format("{} is for {}, not for {}", row->name, row->commands, command)};
        }
    }
}

} // namespace vorcfg
