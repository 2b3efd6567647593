// runner.hpp: calls made one after the other, to the end, the first failure,
// or what ends them from outside.
#pragma once

#include <functional>
#include <vector>

#include "call/session.hpp"
#include "call/watchdog.hpp"
#include "input/options.hpp"

namespace vorcfg {

// The worst of several failures is what leaves the site least known.
ExitCode worse(ExitCode one, ExitCode other);

// What a run came to.
struct Tally {
    unsigned accepted = 0;
    unsigned sent = 0;
    unsigned unread = 0;
    unsigned dry = 0;
    unsigned other = 0;   // done, nothing to do
    unsigned unknown = 0; // of those that failed
    unsigned refused = 0;
    std::vector<std::size_t> failed; // their lines
    ExitCode worst = exit_ok;

    // Whether the call was no failure.
    bool count(const PreparedCall& planned, Outcome outcome);
};

// Where a call started something that ends with this process: until it is due.
void wait_for(const Row& row, const CallResult& report, const std::function<void(unsigned milliseconds)>& rest);

// Who tells of a run.
class Reporter {
public:
    virtual ~Reporter() = default;
    // A call, and how many are left; whether anybody can still be told.
    virtual bool tell(const PreparedCall& planned, const CallResult& report, std::size_t left) = 0;
    // What it came to, `interrupted` or not; the exit code.
    virtual int finish(const Tally& tally, std::size_t left, bool interrupted) = 0;
};

class BatchRunner {
public:
    struct Hooks {
        std::function<void(const PreparedCall&)> before{};
        std::function<void(const PreparedCall&, const CallResult&)> after{};
        std::function<void()> given_up{}; // the process ends in the middle of a call
        bool hang_up_ends = true;
    };

    BatchRunner(const Options& options, std::size_t calls, Reporter& reporter, Hooks hooks);

    // Whether to go on.
    bool make(PreparedCall& planned);
    // Told what it came to; the exit code.
    int finish();

    const Tally& tally() const { return tally_; }
    bool ended() const { return watchdog_.ended(); } // from outside

private:
    int give_up(const char* why);

    const Options& options_;
    Reporter& reporter_;
    const Hooks hooks_;
    std::size_t left_;
    Tally tally_;
    const PreparedCall* under_way_ = nullptr;
    Session session_;
    Watchdog watchdog_;
};

} // namespace vorcfg
