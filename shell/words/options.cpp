#include "words/options.hpp"

#include <algorithm>
#include <charconv>
#include <limits>

#include <fmt/format.h>

#include "text/nearest.hpp"
#include "words/complaint.hpp"

namespace vorcfg {

static constexpr OptionRow rows[] = {
    {"--json", "", "one JSON object per call, and per complaint", &Options::json},
    {"--trace", "", "show each message and its answer on standard error", &Options::trace},
    {"--dry-run", "", "show the exact messages, send nothing; needs no gateway", &Options::dry_run},
    {"--sap", "N", "the shell's own endpoint; by default a free one from 0x1000 up"},
    {"--yes", "", "for a call that wants to be confirmed; ask nothing", &Options::yes},
    {"--keep-going", "", "go on with a batch after a failure", &Options::keep_going},
    {"--password-file", "FILE", "take the call's secret argument from a file"},
    {"--password-stdin", "", "take the call's secret argument from standard input"},
    {"--help", "", "help, also on a family, a call or a command", &Options::help},
    {"--version", "", "the version", &Options::version},
};

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

static std::uint16_t sap_of(std::string_view text)
{
    const auto number = number_of(text);
    if (!number || *number < 0 || *number > UINT16_MAX) {
        throw Complaint{fmt::format("--sap: \"{}\" is no SAP; a number from 0 to 65535 is wanted", text)};
    }
    return static_cast<std::uint16_t>(*number);
}

static void take(Options& options, const OptionRow& row, std::string_view value)
{
    if (row.flag != nullptr) {
        options.*row.flag = true;
    } else if (row.name == "--sap") {
        options.sap = sap_of(value);
    } else if (row.name == "--password-file") {
        options.password = Word{fmt::format("@{}", value)};
    } else {
        options.password = Word{"-"};
    }
}

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

// `konfd query` has options of its own.
static bool has_own_options(const std::vector<Word>& words)
{
    return words.size() >= 2 && words[0].text == "konfd" && words[1].text == "query";
}

Options options_of(std::span<char* const> arguments)
{
    std::vector<Word> typed;
    for (const char* const argument : arguments) {
        typed.push_back({argument});
    }
    return options_of(std::move(typed), {});
}

Options options_of(std::vector<Word> typed, Options options)
{
    bool over = false;
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
        if (row == std::end(rows)) {
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
        take(options, *row, value);
    }
    return options;
}

} // namespace vorcfg
