// input_error.hpp: what is wrong with what was typed, and the exit codes.
#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace vorcfg::input {

// The exit codes, the shell's contract with scripts.
enum ExitCode : int {
    exit_ok,
    exit_refused,
    exit_usage,
    exit_not_delivered,
    exit_not_sent,
    exit_unread,
    exit_unknown,
    exit_unusable,
    exit_no_input,
    exit_contradiction,
    exit_no_output,
    exit_due,
    exit_journal,
    exit_ended,
    exit_partly_reverted,
};

// What each means, in help and the manual.
inline constexpr std::string_view exit_texts[] = {
    "accepted, sent one-way, or done",
    "refused by the manager or konfd",
    "wrong usage, argument or file; nothing was sent",
    "not delivered",
    "nothing was sent",
    "delivered, the verdict cannot be read",
    "unknown: no answer in time",
    "no endpoint: the platform cannot be used",
    "a file, a secret or the terminal cannot be read",
    "the call's result contradicts its messages",
    "standard output cannot be written",
    "calls are left to make, or a confirmation waits or has expired",
    "the journal cannot be used",
    "interrupted, or reverted",
    "reverted in part",
};
static_assert(std::size(exit_texts) == exit_partly_reverted + 1, "a text for each code");

// A place in a file of calls; all empty on the command line.
struct Place {
    std::string file{};
    std::size_t line = 0;
    std::size_t column = 0;
};

struct InputError {
    static constexpr std::size_t no_word = static_cast<std::size_t>(-1);

    std::string text; // all of the message, without a full stop
    ExitCode exit = exit_usage;
    std::string argument{};     // the one that is wrong or missing, if it is one
    std::size_t word = no_word; // its index in the line, the family's name being 0
    std::string call{};
    Place place{};
    std::string excerpt{}; // lines that show where it is, on the command line
    std::string hint{};    // what helps, for a line of its own
    Place from{};          // of the value, where it is a variable's, in the variable's file
};

} // namespace vorcfg::input
