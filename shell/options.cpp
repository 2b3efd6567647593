#include "options.hpp"

#include "complaint.hpp"
#include "plan.hpp"

namespace vorcfg {

static constexpr OptionRow rows[] = {
    {"--json", "", "one JSON object per call"},
    {"--trace", "", "show each message and its answer on standard error"},
    {"--dry-run", "", "show the exact messages, send nothing; needs no gateway"},
    {"--sap", "N", "the shell's own endpoint; by default a free one from 0x1000 up"},
    {"--yes", "", "for a call that wants to be confirmed"},
    {"--keep-going", "", "go on with a batch after a failure"},
    {"--password-file", "FILE", "take the call's secret argument from a file"},
    {"--password-stdin", "", "take the call's secret argument from standard input"},
    {"--help", "", "help, also on a family or a call"},
    {"--version", "", "the version"},
};

std::span<const OptionRow> option_rows()
{
    return rows;
}

static std::uint16_t sap_of(const std::string& text)
{
    const auto number = number_of(text);
    if (!number || *number < 0 || *number > UINT16_MAX) {
        throw Complaint("--sap: \"" + text + "\" is no SAP; a number from 0 to 65535 is wanted");
    }
    return std::uint16_t(*number);
}

// Whether the word is an option, taken as such.
static bool take(Options& options, const std::string& word, const std::string& value)
{
    struct Flag {
        std::string_view name;
        bool Options::*flag;
    };
    static constexpr Flag flags[] = {
        {"--help", &Options::help},       {"-h", &Options::help},
        {"--version", &Options::version}, {"--json", &Options::json},
        {"--trace", &Options::trace},     {"--dry-run", &Options::dry_run},
        {"--yes", &Options::yes},         {"--keep-going", &Options::keep_going},
    };
    for (const Flag& flag : flags) {
        if (word == flag.name) {
            options.*flag.flag = true;
            return true;
        }
    }
    if (word == "--sap") {
        options.sap = sap_of(value);
    } else if (word == "--password-file") {
        options.password = Token{'@' + value};
    } else if (word == "--password-stdin") {
        options.password = Token{"-"};
    } else {
        return false;
    }
    return true;
}

static bool takes_value(std::string_view word)
{
    for (const OptionRow& row : rows) {
        if (row.name == word) {
            return !row.value.empty();
        }
    }
    return false;
}

static bool is_query(const std::vector<Token>& words)
{
    return words.size() >= 2 && words[0].text == "konfd" && words[1].text == "query";
}

Options options_of(std::span<char* const> arguments)
{
    Options options;
    bool over = false;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const std::string word = arguments[i];
        if (!over && word == "--") {
            over = true;
            continue;
        }
        const bool negative_or_input = !word.starts_with("--") && word != "-h" && !options.words.empty();
        if (over || !word.starts_with('-') || negative_or_input) {
            options.words.push_back({word});
            continue;
        }
        const bool valued = takes_value(word);
        if (valued && i + 1 == arguments.size()) {
            throw Complaint(word + ": its value is missing");
        }
        if (take(options, word, valued ? arguments[i + 1] : "")) {
            i += valued ? 1 : 0;
        } else if (is_query(options.words)) {
            options.words.push_back({word});
        } else {
            throw Complaint("unknown option " + word + "; put -- before a text that begins with two dashes");
        }
    }
    return options;
}

} // namespace vorcfg
