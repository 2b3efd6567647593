// options.hpp: the command line, taken apart: options, and what commands there are.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "input/words.hpp"
#include "text/options.hpp"
#include "text/screen.hpp"

namespace vorcfg {

struct OptionRow;

struct Options {
    bool help = false;
    bool version = false;
    bool json = false;
    bool trace = false;
    bool dry_run = false;
    bool yes = false;
    bool keep_going = false;
    bool in_session = false; // of the prompt: its lines are its operator's own, as a batch's are
    bool retry_unknown = false;
    bool skip_unknown = false;
    bool resend_secrets = false;
    bool html = false;
    vor::ColorWhen color{};
    std::optional<std::uint16_t> sap;
    std::optional<unsigned> timeout; // seconds
    std::optional<unsigned> confirm;
    std::vector<std::string> sets; // of variables
    std::vector<std::string> vars; // files of them
    std::string journal;
    std::string gateway;
    std::uint32_t from = 0;       // a line
    std::string only;             // a family
    std::optional<Word> password; // --password-file, --password-stdin: in place of the secret argument
    std::vector<Word> words;
    std::vector<const OptionRow*> given; // on this line
};

struct OptionRow : vor::Option {
    void (*take)(Options& options, const OptionRow& row, std::string_view value);
    std::string_view commands{}; // that it means something to; empty: all
};

std::span<const OptionRow> option_rows();

// Throws a InputError about an option that means nothing to the command, which "a call" is too.
void check_given(const Options& options, std::string_view command);

// Options stand anywhere before a `--`; those of a call with words of its own
// are left among the words.
Options options_of(std::span<char* const> arguments);
// Those of one line, besides those given before it; a quoted word is none.
Options options_of(std::vector<Word> typed, Options options);

// What may stand first on a line in place of a family.
struct Command {
    std::string_view name;        // empty: of what is no command, a call and lines without words
    std::string_view usage;       // as help and the manual have it
    std::string_view about;       // one line
    std::string_view more;        // what help says besides
    int (*run)(const Options&);   // the exit code
    std::string_view wanted = {}; // the usage in a complaint, where it is another
};

// Dispatch, help, completion and the manual are made of it.
std::span<const Command> commands();
// Null, where there is none of that name.
const Command* command_named(std::string_view name);

// The exit code of what a line says. Throws a InputError about what was not done.
int run(const Options& options);

} // namespace vorcfg
