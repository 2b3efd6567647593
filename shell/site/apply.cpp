#include <algorithm>
#include <cstdio>
#include <fcntl.h>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "input/terminal.hpp"
#include "output/output.hpp"
#include "rows/families.hpp"
#include "site/commands.hpp"
#include "site/pending.hpp"
#include "site/show.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

std::string journal_of(const std::string& path, const input::Options& options)
{
    if (options.journal.empty() && path == "-") {
        throw input::InputError{.text = "a file on standard input has no journal of its own", .hint = "give --journal"};
    }
    return options.journal.empty() ? path + ".journal" : options.journal;
}

Selection selection_of(const input::Options& options)
{
    return {options.from, options.only.empty() ? nullptr : &rows::require_family(options.only), options.resend_secrets};
}

std::string listed(const Plan& plan, const Shown& to, bool (*selected)(const PlanLine&))
{
    std::string text;
    for (const PlanLine& line : plan.lines) {
        text += selected(line) ? line_of(line, to) : "";
    }
    return text;
}

bool is_unknown(const PlanLine& line)
{
    return line.due && line.state == LineState::unknown;
}

bool stays(const PlanLine& line)
{
    return line.due && !line.can_be_reverted();
}

void leave_out_unknown(Plan& plan)
{
    for (PlanLine& line : plan.lines) {
        line.due = line.due && line.state != LineState::unknown;
    }
}

std::string time_text(unsigned seconds)
{
    constexpr unsigned minute = 60;
    constexpr unsigned hour = 3600;
    if (seconds % hour == 0) {
        return fmt::format("{} h", seconds / hour);
    }
    return seconds % minute == 0 ? fmt::format("{} min", seconds / minute) : fmt::format("{} s", seconds);
}

class Application {
public:
    Application(const std::string& path, const input::Options& options)
        : options_(options), batch_(call::batch_of(path, options)),
          path_(journal_of(path, options)), to_{batch_.name(), path_, options.json, output::screen_of(options)}
    {
    }

    void leave_input() { batch_.leave_input(); }

    // The exit code of the last error.
    int read()
    {
        const auto each = [&](const call::PreparedCall& call) {
            if (!call::changes_nothing(call)) {
                call::check_confirmed(call, options_);
            }
            planner_.add(call);
        };
        return call::check(batch_, each, output::error_printer(options_.json), !options_.json);
    }

    int show()
    {
        const Journal journal = Journal::read(path_);
        journal.check_gateway(options_.gateway);
        const Plan plan = planned_against(journal);
        if (journal.history().pending()) {
            output::print_error(pending_error(journal), false);
        }
        vor::print(stdout, shown(plan));
        return plan.tally().due != 0 ? input::exit_due : input::exit_ok;
    }

    int make()
    {
        Journal journal = Journal::open(path_, O_CREAT, options_.gateway);
        check_nothing_pending(journal);
        to_.may_revert = options_.confirm.has_value();
        Plan plan = planned_against(journal);
        const bool asks = input::at_terminal() && !options_.yes && to_.in_rows(); // about a plan that is shown
        const std::string unknown = asks ? "" : listed(plan, to_, is_unknown);
        if (options_.skip_unknown) {
            leave_out_unknown(plan);
        }
        vor::print(stdout, to_.in_rows() ? shown(plan) : unknown + notes_of(plan, to_));
        if (!unknown.empty() && !options_.retry_unknown && !options_.skip_unknown) {
            throw input::InputError{.text = fmt::format("{}: {} without a verdict; nothing was sent", to_.file,
                                                        vor::counted(plan.tally()[LineState::unknown], "line")),
                                    .exit = input::exit_unknown,
                                    .hint = "--retry-unknown makes such lines again, --skip-unknown leaves them out"};
        }
        std::vector<std::size_t> lines;
        for (const PlanLine& line : plan.lines) {
            if (line.due) {
                lines.push_back(line.line);
            }
        }
        if (lines.empty() && to_.in_rows()) { // as the plan says
            return input::exit_ok;
        }
        check_reverts(plan, asks);
        if (asks && !lines.empty() && !input::agreed(question(journal, lines.size()))) {
            return output::print_declined(options_.json);
        }
        const auto selected = [&](std::size_t line) { return std::ranges::binary_search(lines, line); };
        batch_.ask(selected);
        batch_.rewind(selected);
        if (options_.confirm && !lines.empty()) {
            journal.append(ApplyPending{journal.history().entries().size() + 1});
        }
        const int exit = make(journal, plan, lines.size());
        return options_.confirm && !lines.empty() ? std::max(exit, wait_for_confirmation(std::move(journal), options_))
                                                  : exit;
    }

private:
    std::string shown(const Plan& plan) const
    {
        return lines_of(plan, to_) + notes_of(plan, to_) + summary_of(plan, to_);
    }

    // Without --gateway, whose journal it is shows in the heading.
    Plan planned_against(const Journal& journal)
    {
        const bool named = !options_.gateway.empty() || journal.history().gateway().empty();
        if (to_.in_rows() || !(to_.json || named)) {
            vor::print(stdout, heading_of(journal.history(), to_));
        }
        Plan plan = planner_.against(journal.history());
        print_warnings(plan, to_);
        return plan;
    }

    // Where nobody is asked, calls that a confirmed apply cannot revert require --yes.
    void check_reverts(const Plan& plan, bool asks) const
    {
        const std::string staying = options_.confirm ? listed(plan, to_, stays) : "";
        vor::print(stdout, to_.json ? staying : "");
        if (!staying.empty() && !asks && !options_.yes) {
            throw input::InputError{"making calls that cannot be reverted requires --yes; nothing was sent"};
        }
    }

    // "Make 4 calls on tower-17? Reverted after 2 min unless confirmed."
    std::string question(const Journal& journal, std::size_t calls) const
    {
        const std::string& gateway = journal.history().gateway();
        return fmt::format(
            "Make {}{}?{}", vor::counted(calls, "call"), gateway.empty() ? "" : " on " + vor::printable(gateway),
            options_.confirm ? fmt::format(" Reverted after {} unless confirmed.", time_text(*options_.confirm)) : "");
    }

    int make(Journal& journal, const Plan& plan, std::size_t calls)
    {
        const auto summary = [&](const call::Tally& tally, std::size_t left) {
            return applied_text(plan, tally, left, options_, to_);
        };
        call::BatchRunner::Hooks hooks{
            .before = [&](const call::PreparedCall& call) { journal.begin(call); },
            .after = [&](const call::PreparedCall& call, const call::CallResult& result) { journal.end(call, result); },
            .hang_up_ends = !options_.confirm};
        if (options_.confirm) {
            hooks.given_up = [&] { output::print_error(pending_error(journal), false); };
        }
        output::ConsoleReporter account(options_, to_.screen, summary);
        for (const PlanLine& line : plan.lines) {
            if (line.due) {
                account.expect(call::name_of(line.key, line.hexadecimal));
            }
        }
        call::BatchRunner runner(options_, calls, account, std::move(hooks));
        int exit = input::exit_ok;
        try {
            for (bool more = true; more;) {
                auto call = batch_.next();
                more = call && runner.make(*call);
            }
        } catch (const input::InputError& error) { // a full disk, above all
            exit = output::print_error(error, options_.json);
        }
        journal.sync();
        return std::max(exit, runner.finish());
    }

    const input::Options& options_;
    call::Batch batch_;
    const std::string path_;
    Shown to_;
    Planner planner_{selection_of(options_)};
};

} // namespace

int run_plan(const std::string& path, const input::Options& options)
{
    Application application(path, options);
    application.leave_input();
    const int exit = application.read();
    return exit != input::exit_ok ? exit : application.show();
}

int run_apply(const std::string& path, const input::Options& options)
{
    if (options.dry_run) {
        throw input::InputError{.text = "apply does not take --dry-run",
                                .hint = "use plan to see the calls, batch --dry-run to see the messages"};
    }
    if (options.retry_unknown && options.skip_unknown) {
        throw input::InputError{"--retry-unknown and --skip-unknown exclude each other"};
    }
    Application application(path, options);
    const int exit = application.read();
    return exit != input::exit_ok ? exit : application.make();
}

} // namespace vorcfg::site
