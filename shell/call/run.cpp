#include "call/run.hpp"

#include <csignal>
#include <cstdio>
#include <ctime>

#include "call/check.hpp"
#include "call/runner.hpp"
#include "output/output.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

void rest(unsigned milliseconds)
{
    const timespec time{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
    const auto before = std::signal(SIGINT, SIG_DFL); // the prompt ignores it
    nanosleep(&time, nullptr);
    std::signal(SIGINT, before);
}

} // namespace

int complain(const Complaint& complaint, bool json)
{
    std::fflush(stdout);
    vor::print(stderr, json ? json_of(complaint) : text_of(complaint));
    return complaint.exit;
}

int run_call(const Options& options)
{
    Secrets secrets({.literals = options.in_session,
                     .standard_input = !options.in_session,
                     .left_out = options.password.value_or(Word{"?"})});
    Planned planned = plan(options.words, secrets);
    check_confirmed(planned, options);
    rehearse(planned);
    if (planned.row->has(cuts_link)) {
        ask_before({planned.row->full_name()}, options);
    }
    Session session({options.dry_run, options.trace}, options.sap);
    const Report report = session.make(planned);
    vor::print(stdout, options.json ? json_of(planned, report) : text_of(planned, report));
    wait_for(*planned.row, report, rest);
    return exit_of(report.verdict.outcome);
}

int run_batch(const std::string& path, const Options& options)
{
    Batch batch = batch_of(path, options);
    std::size_t calls = 0;
    std::vector<std::string> cutting;
    const auto count = [&](const Planned& planned) {
        check_confirmed(planned, options);
        calls++;
        if (planned.row->has(cuts_link)) {
            cutting.push_back(named(planned));
        }
    };
    if (const int exit = check(batch, options, count); exit != exit_ok) {
        return exit;
    }
    ask_before(cutting, options);
    batch.ask();
    batch.rewind();
    const auto summary = [&](const Tally& tally, std::size_t left) {
        return options.json ? json_of(tally, batch.name(), left) : text_of(tally, batch.name(), left);
    };
    Making making(options, calls, summary, {});
    for (bool more = true; more;) {
        auto planned = batch.next();
        more = planned && making.make(*planned);
    }
    return making.finish();
}

} // namespace vorcfg
