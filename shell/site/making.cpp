#include "site/making.hpp"

#include <algorithm>
#include <csignal>

#include "output/output.hpp"
#include "site/revert.hpp"

namespace vorcfg::site {

Made make(const Making& making, const Next& next)
{
    Journal& journal = making.journal;
    call::BatchRunner runner(
        making.options, making.calls, making.reporter,
        {.before = [&](const call::PreparedCall& call) { journal.begin(call); },
         .after = [&](const call::PreparedCall& call, const call::CallResult& result) { journal.end(call, result); },
         .given_up = making.given_up,
         .ends = making.options.confirm ? call::Signals::no_hang_up : call::Signals::all,
         .caller = making.caller});
    try {
        for (bool more = true; more;) {
            auto call = next();
            more = call && runner.make(*call);
        }
        journal.sync();
    } catch (const input::InputError& error) { // a full disk, above all
        output::print_error(error, making.options.json);
        runner.fail(error.exit);
    }
    return {runner.finish(), runner.signal()};
}

Made make_confirmed(const Making& making, const Next& next, const std::function<int()>& start_waiter)
{
    Journal& journal = making.journal;
    const std::uint64_t first = journal.ledger().entries().size() + 1;
    const auto note_pending = [&](int process) {
        const std::chrono::seconds time(*making.options.confirm);
        const Moment now = journal.now();
        journal.append(ApplyPending{.first = first,
                                    .at = now.stamp,
                                    .until = journal.machine().clock.stamp(time),
                                    .boot = now.boot,
                                    .deadline = now.since_boot + time,
                                    .process = process});
    };
    const auto nothing_changed = [&] {
        journal.append(ApplyDecided{.confirmed = true, .at = journal.machine().clock.stamp({})});
    };
    note_pending(0);
    int process = 0;
    try {
        process = start_waiter();
    } catch (const input::InputError&) {
        nothing_changed();
        throw;
    }
    const Made made = make(making, next);
    if (journal.ledger().undos().empty()) {
        nothing_changed();
    } else if (made.signal == SIGTERM) {
        revert(journal, making.options, call::Signals::none, {}, making.caller);
    } else {
        try {
            note_pending(process);
        } catch (const input::InputError& error) { // a full disk: the deadline is that of the first call
            output::print_error(error, making.options.json);
        }
    }
    return made;
}

int exit_after(int exit, const PlanTally& left)
{
    if (exit != input::exit_ok || left.due == 0) {
        return exit;
    }
    return left[LineState::unknown] != 0 ? input::exit_unknown : input::exit_due;
}

} // namespace vorcfg::site
