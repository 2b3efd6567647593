#include "report/run.hpp"

#include <cstdio>
#include <ctime>
#include <filesystem>

#include "plan/batch.hpp"
#include "report/report.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

void check_confirmed(const Planned& planned, const Options& options)
{
    if (planned.row->has(confirmed) && !options.yes && !options.dry_run) {
        throw Complaint{"is made only with --yes", exit_usage, {}, 1, planned.row->full_name(), planned.place};
    }
}

// What a call started ends with this process.
void wait_for(const Row& row, const Report& report)
{
    if (!row.has(waits) || !report.seen.timer || report.verdict.outcome != Outcome::sent) {
        return;
    }
    const std::uint32_t milliseconds = *report.seen.timer;
    vor::print(stderr,
               "vorcfg: the timer ends with this process, which waits until it is due; interrupt to call the timer "
               "off\n");
    timespec rest{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
    nanosleep(&rest, nullptr);
}

Report make(Session& session, Planned& planned, const Options& options)
{
    Report report = session.make(planned);
    vor::print(stdout, options.json ? json_of(planned, report) : text_of(planned, report));
    return report;
}

// Every line of the batch; how many calls it has. Complaints are said, and the exit code is the worst.
int check(Batch& batch, const Options& options, std::size_t& calls)
{
    int exit = exit_ok;
    for (bool more = true; more;) {
        try {
            const auto planned = batch.next();
            more = planned.has_value();
            if (more) {
                check_confirmed(*planned, options);
                calls++;
            }
        } catch (const Complaint& complaint) {
            exit = complain(complaint, options.json);
        }
    }
    batch.rewind();
    return exit;
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
    Secrets secrets({.left_out = options.password.value_or(Word{"?"})});
    Planned planned = plan(options.words, secrets);
    check_confirmed(planned, options);
    rehearse(planned);
    Session session({options.dry_run, options.trace}, options.sap);
    const Report report = make(session, planned, options);
    wait_for(*planned.row, report);
    return exit_of(report.verdict.outcome);
}

int run_batch(const std::string& path, const Options& options)
{
    const bool from_file = path != "-";
    Batch batch(read_batch(path), from_file ? path : "standard input",
                {.literals = true,
                 .standard_input = from_file,
                 .directory = std::filesystem::path(from_file ? path : "").parent_path()});
    std::size_t left = 0;
    if (const int exit = check(batch, options, left); exit != exit_ok) {
        return exit;
    }
    Session session({options.dry_run, options.trace}, options.sap);
    Tally tally;
    while (auto planned = batch.next()) {
        const Report report = make(session, *planned, options);
        left--;
        if (!tally.count(*planned, report.verdict.outcome) && !options.keep_going) {
            break;
        }
        wait_for(*planned->row, report);
    }
    vor::print(stdout, options.json ? json_of(tally, batch.name(), left) : text_of(tally, batch.name(), left));
    return tally.worst;
}

} // namespace vorcfg
