#include "call/runner.hpp"

#include <algorithm>
#include <cstdlib>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vorcfg::call {

input::ExitCode worse(input::ExitCode one, input::ExitCode other)
{
    static constexpr input::ExitCode order[] = {
        input::exit_ok,      input::exit_unread,  input::exit_not_sent,      input::exit_usage,
        input::exit_refused, input::exit_unknown, input::exit_not_delivered, input::exit_contradiction,
        input::exit_unusable};
    return std::ranges::find(order, one) > std::ranges::find(order, other) ? one : other;
}

bool Tally::count(const PreparedCall& call, Outcome outcome, const Observation& seen)
{
    if (exit_of(outcome) == input::exit_ok || state_of(*call.row, outcome, seen) == State::unread) {
        succeeded[static_cast<std::size_t>(outcome)]++;
        return true;
    }
    failed.push_back({call.place.line, outcome});
    worst = worse(exit_of(outcome), worst);
    return false;
}

unsigned Tally::failures(Outcome outcome) const
{
    return static_cast<unsigned>(std::ranges::count(failed, outcome, &Failure::outcome));
}

std::vector<std::size_t> Tally::failed_lines() const
{
    std::vector<std::size_t> lines;
    for (const Failure& each : failed) {
        lines.push_back(each.line);
    }
    return lines;
}

std::optional<unsigned> time_to_wait(const rows::Row& row, const CallResult& result)
{
    return row.has(rows::waits) && result.verdict.outcome == Outcome::sent ? result.seen.timer : std::nullopt;
}

void limit_platform(std::optional<unsigned> seconds)
{
    static constexpr const char* name = "VORINFRA_TIMEOUT_MS";
    static const std::optional<std::string> given = [] {
        const char* const value = std::getenv(name);
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    }();
    if (seconds) {
        setenv(name, std::to_string(*seconds * 1000).c_str(), 1);
    } else if (given) {
        setenv(name, given->c_str(), 1);
    } else {
        unsetenv(name);
    }
}

CallResult given_up(const char* why)
{
    end_captures();
    return {.verdict = {Outcome::unknown, fmt::format("unknown: {}, it may or may not have been done", why)}};
}

WatchedCaller::WatchedCaller(const input::Options& options, Signals ends, Watchdog::GiveUp give_up)
    : session_({options.dry_run, options.trace, options.json}, options.sap),
      watchdog_(options.timeout, ends, std::move(give_up))
{
}

CallResult WatchedCaller::make(PreparedCall& call)
{
    const Watchdog::Call watched(watchdog_);
    return session_.make(call);
}

BatchRunner::BatchRunner(const input::Options& options, std::size_t calls, Reporter& reporter, Hooks hooks)
    : options_(options), reporter_(reporter), hooks_(std::move(hooks)), left_(calls),
      own_(hooks_.caller == nullptr
               ? std::make_unique<WatchedCaller>(options, hooks_.ends, [this](const char* why) { return give_up(why); })
               : nullptr),
      caller_(own_ != nullptr ? own_.get() : hooks_.caller)
{
    limit_platform(options.timeout);
}

bool BatchRunner::make(PreparedCall& call)
{
    if (signal() != 0) {
        return false;
    }
    if (hooks_.before) {
        hooks_.before(call);
    }
    under_way_ = &call;
    const CallResult result = caller_->make(call);
    left_--;
    const bool success = tally_.count(call, result.verdict.outcome, result.seen);
    const bool reported = reporter_.report_call(call, result, left_);
    if (hooks_.after) {
        hooks_.after(call, result);
    }
    if (!reported || (!success && !options_.keep_going)) {
        return false;
    }
    if (const auto milliseconds = time_to_wait(*call.row, result)) {
        reporter_.report_wait(*milliseconds);
        caller_->rest(*milliseconds);
    }
    return signal() == 0;
}

// On the watchdog's thread, while this one is in the library: it counts and reports, and nothing else. Nothing that it
// reads changes meanwhile, since the call comes back no further than to the watchdog's lock.
int BatchRunner::give_up(const char* why)
{
    const CallResult result = given_up(why);
    left_--;
    tally_.count(*under_way_, Outcome::unknown, result.seen);
    reporter_.report_call(*under_way_, result, left_);
    const int exit = finish();
    if (hooks_.given_up) {
        hooks_.given_up(signal());
    }
    return exit;
}

void BatchRunner::fail(input::ExitCode exit)
{
    tally_.worst = std::max(exit, tally_.worst);
}

int BatchRunner::finish()
{
    return reporter_.finish(tally_, left_, signal() != 0 && left_ != 0);
}

} // namespace vorcfg::call
