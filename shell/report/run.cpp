#include "report/run.hpp"

#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "plan/batch.hpp"
#include "prompt/question.hpp"
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

// Asked once, and only where someone sits who can answer.
void ask_before(const std::vector<std::string>& cutting, const Options& options)
{
    if (cutting.empty() || options.yes || options.dry_run || !at_terminal()) {
        return;
    }
    if (!agreed(fmt::format("{} may cut the link that you work over; go on?", fmt::join(cutting, ", ")))) {
        throw Complaint{"nothing was sent"};
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
    const auto before = std::signal(SIGINT, SIG_DFL); // the prompt ignores it
    nanosleep(&rest, nullptr);
    std::signal(SIGINT, before);
}

Report make(Session& session, Planned& planned, const Options& options)
{
    Report report = session.make(planned);
    vor::print(stdout, options.json ? json_of(planned, report) : text_of(planned, report));
    return report;
}

struct Checked {
    std::size_t calls = 0;
    std::vector<std::string> cutting; // the lines that may cut the link
};

// Every line of the batch. Complaints are said, and the exit code is the worst.
int check(Batch& batch, const Options& options, Checked& checked)
{
    int exit = exit_ok;
    for (bool more = true; more;) {
        try {
            const auto planned = batch.next();
            more = planned.has_value();
            if (more) {
                check_confirmed(*planned, options);
                checked.calls++;
                if (planned->row->has(cuts_link)) {
                    checked.cutting.push_back(
                        fmt::format("{} (line {})", planned->row->full_name(), planned->place.line));
                }
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
    const Report report = make(session, planned, options);
    wait_for(*planned.row, report);
    return exit_of(report.verdict.outcome);
}

int run_batch(const std::string& path, const Options& options)
{
    const bool from_file = path != "-";
    if (!from_file && options.in_session) {
        throw Complaint{"standard input is the session itself"};
    }
    Batch batch(read_batch(path), from_file ? path : "standard input",
                {.literals = true,
                 .standard_input = from_file,
                 .directory = std::filesystem::path(from_file ? path : "").parent_path()});
    Checked checked;
    if (const int exit = check(batch, options, checked); exit != exit_ok) {
        return exit;
    }
    ask_before(checked.cutting, options);
    std::size_t left = checked.calls;
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
