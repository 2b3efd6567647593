// exits.hpp: the exit codes, the shell's contract with scripts.
#pragma once

#include <string_view>

namespace vorcfg {

enum ExitCode : int {
    exit_ok = 0,            // accepted, sent one-way, or done without a message
    exit_refused = 1,       // the manager refused
    exit_usage = 2,         // bad usage, a bad argument or a bad batch file
    exit_not_delivered = 3, // the platform refused the exchange or the send, or nobody listens
    exit_not_sent = 4,      // the call sent nothing
    exit_unread = 5,        // delivered, the verdict cannot be read
    exit_unknown = 6,       // no answer in time
    exit_unusable = 7,      // no endpoint: the platform cannot be used
    exit_no_input = 8,      // a file, a secret or a terminal cannot be read
    exit_contradiction = 9, // the call's code contradicts what was seen
    exit_no_output = 10,    // standard output cannot be written
    exit_due = 11,          // a plan has something to do
    exit_journal = 12,      // the journal cannot be used: in use, another gateway's, broken, a full disk
    exit_ended = 13,        // ended by a signal, or taken back
};

// Each in words, as help and the manual tell them.
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

} // namespace vorcfg
