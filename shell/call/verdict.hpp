// verdict.hpp: what may be said of a call, told from what was seen at the
// platform boundary and not guessed from its code.
#pragma once

#include <string>
#include <string_view>

#include "call/observer.hpp"
#include "input/input_error.hpp"

namespace vorcfg {

enum class Outcome {
    accepted,      // the manager or konfd agreed
    sent,          // one-way: no verdict will ever come
    done,          // needed no message
    nothing_to_do, // a call that does nothing
    dry_run,       // captured
    refused,       // the manager or konfd disagreed
    rejected,      // the call itself did not take its arguments
    not_delivered, // the platform refused, or nobody listens
    not_sent,
    unread,  // delivered, the verdict cannot be read
    unknown, // no answer in time
    no_endpoint,
    contradiction,
};

struct Verdict {
    Outcome outcome{};
    std::string text;
    std::string hint{}; // what to do about it // one line, without the call's name
};

Verdict judged(const Row& row, const Returned& back, std::int32_t manager_errno, const Observation& seen);

// Whether the gateway has done it, where that is known. What is sent one-way counts as done.
std::optional<bool> was_done(const Row& row, Outcome outcome, const Observation& seen);

std::string_view name_of(Outcome outcome);
ExitCode exit_of(Outcome outcome);

} // namespace vorcfg
