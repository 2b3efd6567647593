#include "input/options.hpp"

#include <algorithm>
#include <charconv>
#include <limits>

#include <fmt/core.h>

#include "input/complaint.hpp"
#include "text/nearest.hpp"

namespace vorcfg {

namespace {

constexpr OptionRow rows[] = {
    {"--json", "", "one JSON object per call, and per complaint", &Options::json},
    {"--trace", "", "show each message and its answer on standard error", &Options::trace},
    {"--dry-run", "", "show the exact messages, send nothing; needs no gateway", &Options::dry_run, "a call, batch"},
    {"--sap", "N", "the shell's own endpoint; by default a free one from 0x1000 up"},
    {"--yes", "", "for a call that wants to be confirmed; ask nothing", &Options::yes},
    {"--keep-going", "", "go on with a batch after a failure", &Options::keep_going, "batch, apply"},
    {"--timeout", "SECONDS", "a call that takes longer is unknown", nullptr, "batch, apply, revert"},
    {"--set", "NAME=VALUE", "what ${NAME} stands for in a batch file", nullptr, "batch, check, plan, apply"},
    {"--vars", "FILE", "the same from a file, one NAME=VALUE a line", nullptr, "batch, check, plan, apply"},
    {"--journal", "FILE", "what a gateway accepted; by default the batch file's name and .journal", nullptr,
     "plan, apply"},
    {"--gateway", "NAME", "the gateway that the journal is of; kept there", nullptr, "plan, apply"},
    {"--from", "LINE", "plan and apply from this line on", nullptr, "plan, apply"},
    {"--only", "FAMILY", "plan and apply the calls of one family", nullptr, "plan, apply"},
    {"--retry-unknown", "", "make again what was begun and has no verdict", &Options::retry_unknown, "apply"},
    {"--skip-unknown", "", "leave out what was begun and has no verdict", &Options::skip_unknown, "apply"},
    {"--resend-secrets", "", "make accepted calls with a secret again", &Options::resend_secrets, "plan, apply"},
    {"--confirm", "SECONDS", "take back what apply changed, unless it is confirmed in this time", nullptr, "apply"},
    {"--html", "", "a report as a page for a browser or a printer", &Options::html, "report"},
    {"--password-file", "FILE", "take the call's secret argument from a file"},
    {"--password-stdin", "", "take the call's secret argument from standard input"},
    {"--help", "", "help, also on a family, a call or a command", &Options::help},
    {"--version", "", "the version", &Options::version},
};

} // namespace

std::span<const OptionRow> option_rows()
{
    return rows;
}

std::optional<std::int64_t> number_of(std::string_view text)
{
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hexadecimal ? 2 : 0);
    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, hexadecimal ? 16 : 10);
    if (text.empty() || end != text.data() + text.size() || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    // Far out of every argument's range is as good as exact.
    const auto bounded = static_cast<std::int64_t>(std::min<std::uint64_t>(
        error == std::errc() ? magnitude : UINT64_MAX, std::numeric_limits<std::int64_t>::max()));
    return negative ? -bounded : bounded;
}

namespace {

template <class Number>
Number number_in(std::string_view option, std::string_view text, std::string_view what, Number least, Number most)
{
    const auto number = number_of(text);
    if (!number || *number < least || *number > most) {
        throw Complaint{
            fmt::format("{}: \"{}\" is no {}; a number from {} to {} is wanted", option, text, what, least, most)};
    }
    return static_cast<Number>(*number);
}

// "120" and "120s"
unsigned seconds_of(std::string_view option, std::string_view text)
{
    return number_in<unsigned>(option, text.ends_with('s') ? text.substr(0, text.size() - 1) : text,
                               "number of seconds", 1, 86400);
}

void take(Options& options, const OptionRow& row, std::string_view value)
{
    if (row.flag != nullptr) {
        options.*row.flag = true;
    } else if (row.name == "--sap") {
        options.sap = number_in<std::uint16_t>(row.name, value, "SAP", 0, UINT16_MAX);
    } else if (row.name == "--timeout") {
        options.timeout = seconds_of(row.name, value);
    } else if (row.name == "--confirm") {
        options.confirm = seconds_of(row.name, value);
    } else if (row.name == "--set") {
        options.sets.emplace_back(value);
    } else if (row.name == "--vars") {
        options.vars.emplace_back(value);
    } else if (row.name == "--journal") {
        options.journal = value;
    } else if (row.name == "--gateway") {
        options.gateway = value;
    } else if (row.name == "--from") {
        options.from = number_in<std::uint32_t>(row.name, value, "line", 1, UINT32_MAX);
    } else if (row.name == "--only") {
        options.only = value;
    } else if (row.name == "--password-file") {
        options.password = Word{fmt::format("@{}", value)};
    } else {
        options.password = Word{"-"};
    }
}

} // namespace

[[noreturn]] static void complain_unknown(std::string_view name)
{
    std::vector<std::string> known;
    for (const OptionRow& row : rows) {
        known.emplace_back(row.name);
    }
    throw Complaint{
        fmt::format("unknown option {}{}", name,
                    vor::suggestion(vor::nearest(name, known), "put -- before a text that begins with two dashes"))};
}

namespace {

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

} // namespace

Options options_of(std::span<char* const> arguments)
{
    std::vector<Word> typed;
    for (const char* const argument : arguments) {
        typed.push_back({.text = argument, .named = named_length(argument)});
    }
    return options_of(std::move(typed), {});
}

Options options_of(std::vector<Word> typed, Options options)
{
    bool over = false;
    options.given.clear();
    for (std::size_t i = 0; i < typed.size(); i++) {
        const std::string_view word = typed[i].text;
        if (typed[i].quoted) {
            options.words.push_back(std::move(typed[i]));
            continue;
        }
        if (!over && word == "--") {
            over = true;
            continue;
        }
        // a negative number, or - for standard input, is a word
        const bool is_word = !word.starts_with("--") && word != "-h" && !options.words.empty();
        if (over || !word.starts_with('-') || is_word) {
            options.words.push_back(std::move(typed[i]));
            continue;
        }
        const std::size_t equals = std::min(word.find('='), word.size());
        const std::string_view name = word == "-h" ? "--help" : word.substr(0, equals);
        const auto row = std::ranges::find(rows, name, &OptionRow::name);
        if (row == std::end(rows) || (!means_something(*row, a_call) && has_own_options(options.words))) {
            if (!has_own_options(options.words)) {
                complain_unknown(name);
            }
            options.words.push_back(std::move(typed[i]));
            continue;
        }
        std::string_view value;
        if (equals != word.size()) {
            if (row->value.empty()) {
                throw Complaint{fmt::format("{} takes no value", name)};
            }
            value = word.substr(equals + 1);
        } else if (!row->value.empty()) {
            if (++i == typed.size()) {
                throw Complaint{fmt::format("{}: its value is missing", name)};
            }
            value = typed[i].text;
        }
        if (!row->value.empty() && value.empty()) {
            throw Complaint{fmt::format("{}: its value is empty", name)};
        }
        take(options, *row, value);
        options.given.push_back(&*row);
    }
    return options;
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
