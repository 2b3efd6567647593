// confirm.hpp: apply --confirm, from its first call until it is confirmed or reverted.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "call/runner.hpp"
#include "input/options.hpp"
#include "site/revert.hpp"

namespace vorcfg::site {

// --- The process that waits ---------------------------------------------------------------

// Waits for a change of the journal, but no longer than a time; true where the process is to end.
using Wait = std::function<bool(std::chrono::milliseconds longest)>;

// Until the apply whose first call this is has been confirmed or reverted: reverts at the deadline and tries again,
// later each time, what could not be delivered. When the process is to end, reverts at once and tries that for a short
// time only.
void wait_and_revert(const Machine& machine, const std::string& journal, std::uint64_t first,
                     const input::Options& options, const Wait& wait, call::Caller* caller = nullptr);

// One that outlives the terminal. Throws an InputError where it cannot be started.
class Waiter {
public:
    Waiter(Journal& journal, const input::Options& options);
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;
    ~Waiter();

    int process() const { return process_; }
    int end() const { return end_; } // can be read once it has ended
    void revert_now() const;

private:
    int process_ = -1;
    int end_ = -1;
};

// Throws an InputError where no apply has needed a confirmation.
Journal journal_to_decide(const Machine& machine, const std::string& path);
// None while it is not decided.
std::optional<ConfirmedApply> decided_apply(const Journal& journal);

// At a terminal until Enter, Ctrl-C or the deadline; the exit code.
int wait_at_terminal(const Machine& machine, const std::string& journal, const Waiter& waiter,
                     const input::Options& options);

} // namespace vorcfg::site
