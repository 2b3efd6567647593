#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <map>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "input/terminal.hpp"
#include "output/output.hpp"
#include "rows/families.hpp"
#include "site/commands.hpp"
#include "site/pending.hpp"
#include "site/show.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

std::string journal_of(const std::string& path, const Options& options)
{
    if (options.journal.empty() && path == "-") {
        throw InputError{"a file on standard input has no journal of its own; give --journal"};
    }
    return options.journal.empty() ? path + ".journal" : options.journal;
}

Selection selection_of(const Options& options)
{
    return {options.from, options.only.empty() ? nullptr : &require_family(options.only), options.resend_secrets};
}

// "ip set-ip-address 0 (lines 4, 7)" would help nobody; one line each does.
std::string listed(const Plan& plan, const Shown& to, bool (*wanted)(const PlanLine&))
{
    std::string text;
    for (const PlanLine& line : plan.lines) {
        text += wanted(line) ? line_of(line, to) : "";
    }
    return text;
}

// The lines without a verdict are named and decided before anything is sent.
void decide_unknown(Plan& plan, const Shown& to, const Options& options)
{
    const auto is_unknown = [](const PlanLine& line) { return line.due && line.state == LineState::unknown; };
    const auto unknown = std::ranges::count_if(plan.lines, is_unknown);
    if (unknown == 0) {
        return;
    }
    const bool is_said = options.retry_unknown || options.skip_unknown;
    const bool ask = !is_said && at_terminal();
    if (!ask) {
        vor::print(stdout, listed(plan, to, is_unknown));
    }
    if (!is_said && !ask) {
        throw InputError{
            fmt::format("{}: {} without a verdict; --retry-unknown makes them again, --skip-unknown leaves "
                        "them out; nothing was sent",
                        to.file, vor::counted(static_cast<std::uint64_t>(unknown), "line")),
            exit_unknown};
    }
    for (PlanLine& line : plan.lines) {
        if (is_unknown(line)) {
            line.due = options.retry_unknown ||
                       (ask && agreed(line_of(line, {to.file, to.journal, false}) + "Make it again?"));
        }
    }
}

bool stays(const PlanLine& line)
{
    return line.due && !can_be_taken_back(line.key, line.replaced);
}

// Of a confirmed apply, what cannot be taken back wants a yes.
void confirm_what_stays(const Plan& plan, const Shown& to, const Options& options)
{
    const std::string names = listed(plan, to, stays);
    if (names.empty()) {
        return;
    }
    vor::print(stdout, to.json ? names : "these cannot be taken back:\n" + names);
    if (!options.yes && !(at_terminal() && agreed("Make them all the same?"))) {
        throw InputError{"what cannot be taken back is made only with --yes; nothing was sent"};
    }
}

class Application {
public:
    Application(const std::string& path, const Options& options)
        : options_(options), batch_(batch_of(path, options)),
          path_(journal_of(path, options)), to_{batch_.name(), path_, options.json}
    {
    }

    void leave_input() { batch_.leave_input(); }

    // The exit code of what is complained about.
    int read()
    {
        const auto each = [&](const PreparedCall& planned) {
            if (!changes_nothing(planned)) {
                check_confirmed(planned, options_);
            }
            planner_.add(planned);
            if (planned.row->has(cuts_link)) {
                cutting_.emplace(planned.place.line, named(planned));
            }
        };
        return check(batch_, each, complaining(options_.json));
    }

    int show()
    {
        const Journal journal = Journal::read(path_);
        journal.check_gateway(options_.gateway);
        tell_gateway(journal);
        const Plan plan = planned_against(journal);
        if (journal.history().pending()) {
            vor::print_line(stderr, fmt::format("vorcfg: {}", pending_text(journal)));
        }
        vor::print(stdout, lines_of(plan, to_) + summary_of(plan, to_));
        return plan.tally().due != 0 ? exit_due : exit_ok;
    }

    int make()
    {
        Journal journal = Journal::open(path_, O_CREAT, options_.gateway);
        check_nothing_pending(journal);
        tell_gateway(journal);
        Plan plan = planned_against(journal);
        decide_unknown(plan, to_, options_);
        if (options_.confirm && plan.tally().due != 0) {
            confirm_what_stays(plan, to_, options_);
        }
        std::vector<std::size_t> lines;
        std::vector<std::string> cutting;
        for (const PlanLine& line : plan.lines) {
            if (line.due) {
                lines.push_back(line.line);
                if (const auto found = cutting_.find(line.line); found != cutting_.end()) {
                    cutting.push_back(found->second);
                }
            }
        }
        ask_before(cutting, options_);
        const auto wanted = [&](std::size_t line) { return std::ranges::binary_search(lines, line); };
        batch_.ask(wanted);
        batch_.rewind(wanted);
        vor::print(stdout, listed(plan, to_, [](const PlanLine& line) { return line.is_not_compared(); }));
        if (options_.confirm && !lines.empty()) {
            journal.append(ApplyPending{journal.history().entries().size() + 1});
        }
        const int exit = make(journal, plan, lines.size());
        return options_.confirm && !lines.empty() ? std::max(exit, wait_for_confirmation(std::move(journal), options_))
                                                  : exit;
    }

private:
    // Whoever does not say which gateway it is, is told whose journal is used.
    void tell_gateway(const Journal& journal) const
    {
        if (options_.gateway.empty() && !journal.history().gateway().empty()) {
            vor::print_line(stderr, fmt::format("vorcfg: {} is of gateway {}; --gateway says which one this is", path_,
                                                vor::quoted(journal.history().gateway())));
        }
    }

    Plan planned_against(const Journal& journal)
    {
        Plan plan = planner_.against(journal.history());
        vor::print(stderr, warnings_of(plan, to_));
        return plan;
    }

    int make(Journal& journal, const Plan& plan, std::size_t calls)
    {
        const auto summary = [&](const Tally& tally, std::size_t left) { return applied_text(plan, tally, left, to_); };
        BatchRunner::Hooks hooks{
            .before = [&](const PreparedCall& planned) { journal.begin(planned); },
            .after = [&](const PreparedCall& planned, const CallResult& report) { journal.end(planned, report); },
            .hang_up_ends = !options_.confirm};
        if (options_.confirm) {
            hooks.given_up = [&] { vor::print_line(stderr, fmt::format("vorcfg: {}", pending_text(journal))); };
        }
        Account account(options_, calls, summary);
        BatchRunner runner(options_, calls, account, std::move(hooks));
        int exit = exit_ok;
        try {
            for (bool more = true; more;) {
                auto planned = batch_.next();
                more = planned && runner.make(*planned);
            }
        } catch (const InputError& complaint) { // a full disk, above all
            exit = complain(complaint, options_.json);
        }
        journal.sync();
        return std::max(exit, runner.finish());
    }

    const Options& options_;
    Batch batch_;
    const std::string path_;
    const Shown to_;
    Planner planner_{selection_of(options_)};
    std::map<std::size_t, std::string> cutting_; // the lines that may cut the link one works over
};

} // namespace

int run_plan(const std::string& path, const Options& options)
{
    Application application(path, options);
    application.leave_input();
    const int exit = application.read();
    return exit != exit_ok ? exit : application.show();
}

int run_apply(const std::string& path, const Options& options)
{
    if (options.dry_run) {
        throw InputError{"vorcfg plan shows what apply would make, vorcfg --dry-run batch the messages"};
    }
    if (options.retry_unknown && options.skip_unknown) {
        throw InputError{"one of --retry-unknown and --skip-unknown is enough"};
    }
    Application application(path, options);
    const int exit = application.read();
    return exit != exit_ok ? exit : application.make();
}

} // namespace vorcfg
