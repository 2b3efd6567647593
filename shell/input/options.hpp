// options.hpp: the options of a command line, and the table of commands.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "input/words.hpp"
#include "text/options.hpp"
#include "text/screen.hpp"

namespace vorcfg::input {

struct OptionRow;

// A file of calls that nobody reads from the disk: what it holds, and its variables.
struct GivenFile {
    std::string text;
    Variables variables;
};

struct Options {
    bool help = false;
    bool brief = false; // -h: help on one screen
    bool version = false;
    bool json = false;
    bool trace = false;
    bool dry_run = false;
    bool yes = false;
    bool keep_going = false;
    bool in_session = false; // from the prompt, whose lines nobody else can read, as with a file
    bool retry_unknown = false;
    bool skip_unknown = false;
    bool resend_secrets = false;
    bool all = false;     // make what is up to date, too
    bool expired = false; // revert what nobody confirmed in time
    bool html = false;
    vor::ColorWhen color{};
    std::optional<std::uint16_t> sap;
    std::optional<unsigned> timeout; // seconds
    std::optional<unsigned> confirm;
    std::vector<std::string> sets; // of variables
    std::vector<std::string> vars; // files of them
    std::vector<std::string> rows; // of a spreadsheet, each a condition
    bool allow_unused = false;     // variables of files
    std::string journal;
    std::string gateway;
    std::uint32_t from = 0;                // a line
    std::string only;                      // a family
    std::optional<Word> password;          // --password-file, --password-stdin: replaces the secret argument
    std::shared_ptr<const GivenFile> file; // what the file that the words name holds; null: it is read
    std::vector<Word> words;
    std::vector<const OptionRow*> given; // on this line
};

struct OptionRow : vor::Option {
    void (*take)(Options& options, const OptionRow& row, std::string_view value);
    std::string_view commands{}; // that take it; empty: all
    bool brief = false;          // shown by -h
    bool in_requests = false;    // a member of those that serve reads, too
};

std::span<const OptionRow> option_rows();
inline constexpr std::string_view a_call = "a call"; // is a command, too
bool takes_option(const OptionRow& row, std::string_view command);

// Throws an InputError about an option that the command does not take.
void check_given(const Options& options, std::string_view command);

std::vector<Word> words_of(std::span<char* const> arguments);
// Adds those of one line. They may be anywhere before a `--`; a quoted word is never an option, and those that a call
// reads itself are left among the words. Throws the first error after the last word, so that --json counts.
void take_options(std::vector<Word> typed, Options& options);

enum class CommandGroup { make, set_up, look_up };

// How help names them, in this order.
inline constexpr std::string_view group_titles[] = {"Make calls", "Set up a site", "Look up"};

// The first word of a line, instead of a family.
struct Command {
    CommandGroup group;
    std::string_view name;         // empty: a call, or lines from standard input
    std::string_view usage;        // in help and the manual
    std::string_view about;        // one line
    std::string_view more;         // a paragraph of details
    int (*run)(const Options&);    // returns the exit code
    std::string_view options = {}; // in the usage of an error
};

// Dispatch, help, completion and the manual use this table.
std::span<const Command> commands();
// Null where there is none of that name.
const Command* command_named(std::string_view name);

// Runs a line; returns the exit code. Throws an InputError.
int run(const Options& options);

} // namespace vorcfg::input
