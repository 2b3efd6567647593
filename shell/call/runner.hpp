// runner.hpp: calls made one after the other, to the end, the first failure, or until they are ended from outside.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "call/session.hpp"
#include "call/watchdog.hpp"
#include "input/options.hpp"

namespace vorcfg::call {

// The worst of several failures is the one that leaves the site least known.
input::ExitCode worse(input::ExitCode one, input::ExitCode other);

// The calls made, by their outcomes.
struct Tally {
    struct Failure {
        std::size_t line;
        Outcome outcome;
    };

    std::array<unsigned, outcome_count> succeeded{};
    std::vector<Failure> failed;
    input::ExitCode worst = input::exit_ok;

    // Whether the call succeeded.
    bool count(const PreparedCall& call, Outcome outcome, const Observation& seen);
    unsigned successes(Outcome outcome) const { return succeeded[static_cast<std::size_t>(outcome)]; }
    unsigned failures(Outcome outcome) const;
    std::vector<std::size_t> failed_lines() const;
};

// The milliseconds until the timer is due that a call started: it ends with this process, which has to wait.
std::optional<unsigned> time_to_wait(const rows::Row& row, const CallResult& result);

// How long the platform waits for an answer; without a limit as its environment says.
void limit_platform(std::optional<unsigned> seconds);
// The result of a call that does not return; what is captured of it is lost.
CallResult given_up(const char* why);

// Reports a run.
class Reporter {
public:
    virtual ~Reporter() = default;
    // A call, and how many are left; false where the report cannot be written any more.
    virtual bool report_call(const PreparedCall& call, const CallResult& result, std::size_t left) = 0;
    // Before a call's timer is waited for.
    virtual void report_wait(unsigned milliseconds) = 0;
    // The totals; the exit code.
    virtual int finish(const Tally& tally, std::size_t left, bool interrupted) = 0;
};

// Makes calls; a test has a gateway of its own.
class Caller {
public:
    virtual ~Caller() = default;
    virtual CallResult make(PreparedCall& call) = 0;
    virtual int signal() const = 0; // from outside: no further call may begin
    virtual void rest(unsigned milliseconds) = 0;
};

// Over the library; `give_up` reports a call that does not return, and the process ends.
class WatchedCaller final : public Caller {
public:
    WatchedCaller(const input::Options& options, Signals ends, Watchdog::GiveUp give_up);

    CallResult make(PreparedCall& call) override;
    int signal() const override { return watchdog_.signal(); }
    void rest(unsigned milliseconds) override { watchdog_.rest(milliseconds); }

private:
    Session session_;
    Watchdog watchdog_;
};

class BatchRunner {
public:
    struct Hooks {
        std::function<void(const PreparedCall&)> before{};
        std::function<void(const PreparedCall&, const CallResult&)> after{};
        std::function<void(int signal)> given_up{}; // the process ends in the middle of a call
        Signals ends = Signals::all;
        Caller* caller = nullptr; // else over the library
    };

    BatchRunner(const input::Options& options, std::size_t calls, Reporter& reporter, Hooks hooks);

    // Whether to continue.
    bool make(PreparedCall& call);
    void fail(input::ExitCode exit); // for another reason than a call
    // Reports the totals; the exit code.
    int finish();

    const Tally& tally() const { return tally_; }
    int signal() const { return caller_->signal(); } // from outside; 0: none came

private:
    int give_up(const char* why);

    const input::Options& options_;
    Reporter& reporter_;
    const Hooks hooks_;
    std::size_t left_;
    Tally tally_;
    const PreparedCall* under_way_ = nullptr;
    std::unique_ptr<Caller> own_;
    Caller* const caller_;
};

} // namespace vorcfg::call
