#include "call/runner.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include <fmt/core.h>

#include "call/capture.hpp"
#include "output/output.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

// From so many calls on, a terminal shows how far they are.
constexpr std::size_t long_file = 20;

} // namespace

// What a call started ends with this process.
void wait_for(const Row& row, const Report& report, const std::function<void(unsigned)>& rest)
{
    if (row.has(waits) && report.seen.timer && report.verdict.outcome == Outcome::sent) {
        vor::print(stderr,
                   "vorcfg: the timer ends with this process, which waits until it is due; interrupt to call the timer "
                   "off\n");
        rest(*report.seen.timer);
    }
}

namespace {

const Options& told_to_platform(const Options& options)
{
    if (options.timeout) {
        setenv("VORINFRA_TIMEOUT_MS", std::to_string(*options.timeout * 1000).c_str(), 1);
    }
    return options;
}

} // namespace

Making::Making(const Options& options, std::size_t calls, Summary summary, Hooks hooks)
    : options_(told_to_platform(options)), summary_(std::move(summary)), hooks_(std::move(hooks)), calls_(calls),
      left_(calls), session_({options.dry_run, options.trace}, options.sap),
      keeper_(options.timeout, hooks_.hang_up_ends, [this](const char* why) { return give_up(why); })
{
}

void Making::tell(const Planned& planned, const Report& report)
{
    std::string progress;
    if (calls_ >= long_file && !options_.json && isatty(STDOUT_FILENO) == 1) {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begun_;
        const std::size_t made = calls_ - left_;
        progress = fmt::format("[{}/{} {:.0f}/s] ", made, calls_, static_cast<double>(made) / passed.count());
    }
    errno = 0;
    vor::print(stdout, progress + (options_.json ? json_of(planned, report) : text_of(planned, report)));
    output_error_ = output_error_ != 0 || std::ferror(stdout) == 0 ? output_error_ : errno;
}

bool Making::make(Planned& planned)
{
    if (keeper_.ended()) {
        return false;
    }
    if (hooks_.before) {
        hooks_.before(planned);
    }
    Report report;
    {
        under_way_ = &planned;
        const Keeper::Call call(keeper_);
        report = session_.make(planned);
    }
    left_--;
    const bool success = tally_.count(planned, report.verdict.outcome);
    tell(planned, report);
    if (hooks_.after) {
        hooks_.after(planned, report);
    }
    if (std::ferror(stdout) != 0 || (!success && !options_.keep_going)) {
        return false;
    }
    wait_for(*planned.row, report, [this](unsigned milliseconds) { keeper_.rest(milliseconds); });
    return !keeper_.ended();
}

// Called by the keeper's thread, while this one is in the library.
int Making::give_up(const char* why)
{
    Capture::end_all();
    Report report;
    report.verdict = {Outcome::unknown, fmt::format("unknown: {}, it may or may not have been done", why)};
    left_--;
    tally_.count(*under_way_, Outcome::unknown);
    tell(*under_way_, report);
    const int exit = finish();
    if (hooks_.given_up) {
        hooks_.given_up();
    }
    return exit;
}

int Making::finish()
{
    const bool ended = keeper_.ended() && left_ != 0;
    if (ended) {
        vor::print(stderr, "vorcfg: interrupted\n");
    }
    // whoever closed standard output is told on the other one
    errno = 0;
    vor::print(std::ferror(stdout) != 0 ? stderr : stdout, summary_(tally_, left_));
    output_error_ = output_error_ == 0 ? errno : output_error_;
    errno = output_error_; // for who complains of it in the end
    return std::ferror(stdout) != 0 ? exit_no_output : ended ? exit_ended : tally_.worst;
}

} // namespace vorcfg
