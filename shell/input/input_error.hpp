// input_error.hpp: what the shell says instead of doing what it was told.
#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace vorcfg {

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
};

// What each means, as help and the manual tell it.
inline constexpr std::string_view exit_texts[] = {
    "accepted, sent one-way, or done",
    "refused by the manager or konfd",
    "bad usage, a bad argument or a bad file; nothing was sent",
    "not delivered",
    "nothing was sent",
    "delivered, the verdict cannot be read",
    "unknown: no answer in time",
    "no endpoint, the platform cannot be used",
    "a file, a secret or a terminal cannot be read",
    "a call contradicts what was seen",
    "standard output cannot be written",
    "a plan has something to make",
    "the journal cannot be used",
    "interrupted, or taken back",
};
static_assert(std::size(exit_texts) == exit_ended + 1, "a text for each code");

// Where a line of a batch stands; all empty on the command line.
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
};

} // namespace vorcfg
