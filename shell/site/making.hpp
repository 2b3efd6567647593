// making.hpp: the calls of an apply, each in the journal before it is sent and with its verdict afterwards.
#pragma once

#include <functional>
#include <optional>

#include "call/runner.hpp"
#include "site/journal.hpp"
#include "site/plan.hpp"

namespace vorcfg::site {

struct Making {
    Journal& journal;
    const input::Options& options;
    std::size_t calls;
    call::Reporter& reporter;
    std::function<void(int signal)> given_up{}; // the process ends in the middle of a call
    call::Caller* caller = nullptr;             // else over the library
};

struct Made {
    int exit;
    int signal; // that ended it; 0: none
};

using Next = std::function<std::optional<call::PreparedCall>()>;

// Makes the calls that `next` returns, to the end, the first failure or a signal.
Made make(const Making& making, const Next& next);
// The same, to be reverted unless confirmed: the waiting process is started before the first call, and its process
// number noted after the last. Reverts at once after a SIGTERM.
Made make_confirmed(const Making& making, const Next& next, const std::function<int()>& start_waiter);

// The exit code of an apply: success only where nothing is left to make.
int exit_after(int exit, const PlanTally& left);

} // namespace vorcfg::site
