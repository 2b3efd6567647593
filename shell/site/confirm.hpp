// confirm.hpp: apply --confirm, from its first call until it is confirmed or reverted.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "call/runner.hpp"
#include "input/options.hpp"
#include "site/journal.hpp"

namespace vorcfg::site {

// --- The process that waits ---------------------------------------------------------------

enum class Woken { time, change, terminated };
// Waits for a change of the journal, or for a time.
using Wait = std::function<Woken(std::chrono::milliseconds longest)>;

// Until it is confirmed or reverted: reverts at the deadline, or at once when the process is terminated, and tries
// again, later each time, what could not be delivered. A journal in use is being confirmed or reverted.
void wait_and_revert(const Machine& machine, const std::string& journal, const input::Options& options,
                     const Wait& wait, call::Caller* caller = nullptr);

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

// To confirm or revert it. Throws an InputError where nothing waits for that.
Journal undecided_journal(const Machine& machine, const std::string& path, const char* what);

// At a terminal until Enter, Ctrl-C or the deadline; the exit code.
int wait_at_terminal(const Machine& machine, const std::string& journal, const Waiter& waiter,
                     const input::Options& options);

} // namespace vorcfg::site
