// plan and apply.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <set>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "input/state.hpp"
#include "input/terminal.hpp"
#include "output/output.hpp"
#include "rows/families.hpp"
#include "site/commands.hpp"
#include "site/confirm.hpp"
#include "site/making.hpp"
#include "site/revert.hpp"
#include "site/show.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

Selection selection_of(const input::Options& options)
{
    return {options.from, options.only.empty() ? nullptr : &rows::require_family(options.only)};
}

Again again_of(const input::Options& options)
{
    if (options.all) {
        return Again::all;
    }
    return options.resend_secrets ? Again::secrets : Again::none;
}

bool is_unknown(const PlanLine& line)
{
    return line.due && line.state == LineState::unknown;
}

bool is_due(const PlanLine& line)
{
    return line.due;
}

bool stays(const PlanLine& line)
{
    return line.due && !line.can_be_reverted;
}

void leave_out_unknown(Plan& plan)
{
    for (PlanLine& line : plan.lines) {
        line.due = line.due && line.state != LineState::unknown;
    }
}

// The gateway as the file or the option names it; none where neither does.
std::string gateway_of(const call::Batch& batch, const input::Options& options)
{
    const std::string& named = options.gateway.empty() ? batch.gateway() : options.gateway;
    if (!options.gateway.empty()) {
        call::check_gateway(options.gateway);
    }
    if (!batch.gateway().empty() && named != batch.gateway()) {
        throw input::InputError{fmt::format("{} is for gateway {}, not {}", batch.name(), vor::quoted(batch.gateway()),
                                            vor::quoted(named))};
    }
    if (named.empty() && batch.uses_variables()) {
        throw input::InputError{
            .text = fmt::format("{} uses variables, but names no gateway; whose journal is it?", batch.name()),
            .hint = "begin the file with a line such as gateway tower-${site}, or give --gateway"};
    }
    return named;
}

// NAME.journal beside the file or in the folder that was named, or FILE.journal where no gateway is named, or where
// that is this gateway's.
std::string journal_of(const std::string& path, const std::string& gateway, const input::Options& options)
{
    const bool in_folder = options.journal.ends_with('/') || std::filesystem::is_directory(options.journal);
    if (!options.journal.empty() && !in_folder) {
        return options.journal;
    }
    if (path == "-" && gateway.empty()) {
        throw input::InputError{.text = "a file on standard input has no journal of its own",
                                .hint = "give --journal, or begin it with a line such as gateway tower-17"};
    }
    const std::filesystem::path file(path);
    const std::filesystem::path folder = in_folder ? std::filesystem::path(options.journal) : file.parent_path();
    const std::string of_file = in_folder ? (folder / file.filename()).string() + ".journal" : path + ".journal";
    if (gateway.empty()) {
        return of_file;
    }
    const std::string of_gateway = (folder / (gateway + ".journal")).string();
    const bool is_its = path != "-" && !std::filesystem::exists(of_gateway) && std::filesystem::exists(of_file) &&
                        Journal::read(this_machine(options.json), of_file).ledger().gateway() == gateway;
    return is_its ? of_file : of_gateway;
}

class Application {
public:
    Application(const std::string& path, const input::Options& options)
        : options_(options), machine_(this_machine(options.json)), source_(path),
          batch_(call::batch_of(path, options)), to_{batch_.name(), {}, {}, options.json, output::screen_of(options)}
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
            planner_.add(call, machine_.key_of(call, SecretKey::Missing::left));
        };
        const int exit = call::check(batch_, each, output::error_printer(options_.json), !options_.json);
        if (options_.from > batch_.line()) {
            throw input::InputError{fmt::format("--from must be 1 to {}, the last line of {}, not {}", batch_.line(),
                                                batch_.name(), options_.from)};
        }
        if (exit == input::exit_ok) {
            to_.gateway = gateway_of(batch_, options_);
            to_.journal = journal_of(source_, to_.gateway, options_);
        }
        return exit;
    }

    int show()
    {
        const Journal journal = Journal::read(machine_, to_.journal);
        journal.check_gateway(to_.gateway);
        const Plan plan = planned_against(journal);
        const auto apply = confirmed_apply_of(journal);
        if (apply && apply->confirmation != Confirmation::confirmed) {
            print(*apply, options_.json, stderr);
        }
        vor::print(stdout, shown(plan, journal.ledger()));
        return exit_of(plan, journal.ledger());
    }

    int make()
    {
        if (options_.journal.ends_with('/')) {
            input::make_private(std::filesystem::path(to_.journal).parent_path());
        }
        Journal journal = Journal::open(machine_, to_.journal, Access::create, to_.gateway);
        journal.check_gateway(to_.gateway);
        revert_expired(journal);
        to_.may_revert = options_.confirm.has_value();
        Plan plan = planned_against(journal);
        const bool asks = input::at_terminal() && !options_.yes && to_.in_rows(); // about a plan that is shown
        const std::string unknown = asks || options_.all ? "" : listed(plan, is_unknown);
        if (options_.skip_unknown) {
            leave_out_unknown(plan);
        }
        vor::print(stdout, to_.in_rows() ? shown(plan, journal.ledger())
                           : to_.json    ? listed(plan, is_due)
                                         : unknown + notes_of(plan, to_));
        if (!unknown.empty() && !options_.retry_unknown && !options_.skip_unknown) {
            throw input::InputError{.text = fmt::format("{}: {} without a verdict; nothing was sent", to_.file,
                                                        vor::counted(plan.tally()[LineState::unknown], "line")),
                                    .exit = input::exit_unknown,
                                    .hint = "--retry-unknown makes such lines again, --skip-unknown leaves them out"};
        }
        const std::size_t calls = plan.tally().due;
        if (calls == 0 && to_.in_rows()) { // as the plan says
            return exit_after(input::exit_ok, journal.ledger());
        }
        check_reverts(plan, asks);
        if (asks && calls != 0 && !input::agreed(question(calls))) {
            return output::print_declined(options_.json);
        }
        const auto selected = [&](std::size_t line) { return plan.is_due(line); };
        batch_.ask(selected);
        batch_.rewind(selected);
        if (options_.all) {
            void_accepted(journal, plan);
        }
        return make(journal, plan);
    }

private:
    std::string listed(const Plan& plan, bool (*selected)(const PlanLine&)) const
    {
        std::string text;
        for (const PlanLine& line : plan.lines) {
            text += selected(line) ? line_of(line, to_) : "";
        }
        return text;
    }

    std::string shown(const Plan& plan, const Ledger& ledger) const
    {
        return lines_of(plan, to_) + notes_of(plan, to_) + summary_of(plan, exit_of(plan, ledger), to_);
    }

    // Without a name, whose journal it is shows in the heading.
    Plan planned_against(const Journal& journal)
    {
        if (to_.in_rows()) {
            vor::print(stdout, heading_of(journal.ledger(), to_));
        } else if (!to_.gateway.empty() && to_.journal == to_.file + ".journal") {
            output::print_notice(fmt::format("using {}, the journal of this gateway", to_.journal), {to_.file},
                                 options_.json, stderr);
        }
        Plan plan = planner_.against(journal.ledger(), again_of(options_));
        print_warnings(plan, to_);
        return plan;
    }

    // What nobody confirmed in time goes first.
    void revert_expired(Journal& journal)
    {
        const auto before = confirmed_apply_of(journal);
        if (!before || !journal.ledger().is_undecided()) {
            return;
        }
        if (before->confirmation == Confirmation::waiting) {
            throw input::InputError(error_of(*before));
        }
        const bool is_done = revert(journal, options_, call::Signals::all) == Reverting::done;
        require_recorded(journal);
        const ConfirmedApply apply = *confirmed_apply_of(journal);
        print_lines(apply, options_.json);
        if (!is_done) {
            throw input::InputError(error_of(apply));
        }
        print(apply, options_.json, stdout);
    }

    // Where nobody is asked, calls that a confirmed apply cannot revert require --yes.
    void check_reverts(const Plan& plan, bool asks) const
    {
        if (options_.confirm && std::ranges::any_of(plan.lines, stays) && !asks && !options_.yes) {
            throw input::InputError{"making calls that cannot be reverted requires --yes; nothing was sent"};
        }
    }

    // "Make 4 calls on tower-17? Reverted after 2 min unless confirmed."
    std::string question(std::size_t calls) const
    {
        return fmt::format("Make {}{}?{}", vor::counted(calls, "call"),
                           to_.gateway.empty() ? "" : " on " + vor::printable(to_.gateway),
                           options_.confirm ? fmt::format(" Reverted after {} unless confirmed.",
                                                          time_text(std::chrono::seconds(*options_.confirm)))
                                            : "");
    }

    // With --all nothing is known any more of what the lines set, also if not all of them are made.
    void void_accepted(Journal& journal, const Plan& plan) const
    {
        std::set<std::uint64_t> numbers;
        for (const PlanLine& line : plan.lines) {
            for (const call::Setting& setting : call::settings_of(line.key)) {
                const Entry* const current = journal.ledger().of(setting).current;
                if (current != nullptr) {
                    numbers.insert(current->begun.number);
                }
            }
        }
        if (!numbers.empty()) {
            journal.append(CallsVoided{{numbers.begin(), numbers.end()}, machine_.clock.stamp()});
        }
    }

    int make(Journal& journal, const Plan& plan)
    {
        const std::size_t before = journal.ledger().entries().size();
        const auto summary = [&](const call::Tally& tally, std::size_t left) {
            return text_of(applied(plan, journal.ledger(), before, tally, left), to_);
        };
        output::ConsoleReporter account(options_, to_.screen, summary);
        for (const PlanLine& line : plan.lines) {
            if (line.due) {
                account.expect(call::name_of(line.key, line.hexadecimal));
            }
        }
        Making making{.journal = journal, .options = options_, .calls = account.calls(), .reporter = account};
        const auto next = [this] { return batch_.next(); };
        if (!options_.confirm || account.calls() == 0) {
            return exit_after(site::make(making, next).exit, journal.ledger());
        }
        std::optional<Waiter> waiter;
        making.given_up = [&](int signal) {
            if (signal == SIGTERM) {
                waiter->revert_now();
                output::print_notice(fmt::format("{}: being reverted now", to_.journal), {}, options_.json, stderr);
            } else {
                print(*confirmed_apply_of(journal), options_.json, stderr);
            }
        };
        const Made made = make_confirmed(making, next, [&] {
            waiter.emplace(journal, options_);
            return waiter->process();
        });
        return confirmed(journal, *waiter, made);
    }

    // What an apply --confirm ends with.
    int confirmed(Journal& journal, const Waiter& waiter, const Made& made)
    {
        const ConfirmedApply apply = *confirmed_apply_of(journal);
        const int exit = exit_after(made.exit, journal.ledger());
        if (apply.undos.empty()) { // nothing was changed
            return exit;
        }
        if (made.signal == SIGTERM) {
            print_lines(apply, options_.json);
            print(apply, options_.json, stdout);
            return journal.ledger().is_undecided() ? int(input::exit_ended) : apply.exit();
        }
        journal.close();
        print(apply, options_.json, stdout);
        if (!input::at_terminal()) {
            return exit;
        }
        const int end = wait_at_terminal(machine_, to_.journal, waiter, options_);
        return end == input::exit_ok ? exit : end;
    }

    Applied applied(const Plan& plan, const Ledger& ledger, std::size_t before, const call::Tally& tally,
                    std::size_t left) const
    {
        const bool stopped = left != 0 || (!options_.keep_going && !tally.failed.empty());
        Applied applied{.calls = {},
                        .failed = tally.failed_lines(),
                        .left = left,
                        .stopped = stopped,
                        .continues = stopped && !options_.confirm,
                        .asking = plan.asking,
                        .before = plan.tally(),
                        .after = planner_.against(ledger),
                        .exit = exit_after(tally.worst, ledger)};
        for (std::size_t i = before; i < ledger.entries().size(); i++) {
            applied.calls[ledger.entries()[i].state()]++;
        }
        return applied;
    }

    int exit_of(const Plan& plan, const Ledger& ledger) const
    {
        return plan.tally().due != 0 || ledger.is_undecided() ? input::exit_due : input::exit_ok;
    }

    int exit_after(int exit, const Ledger& ledger) const
    {
        return site::exit_after(exit, planner_.against(ledger).tally());
    }

    const input::Options& options_;
    const Machine machine_;
    const std::string source_;
    call::Batch batch_;
    Shown to_;
    Planner planner_{selection_of(options_)};
};

} // namespace

SiteJournal journal_of(const std::string& path, const call::Batch& batch, const input::Options& options)
{
    SiteJournal journal{.path = {}, .gateway = gateway_of(batch, options)};
    journal.path = journal_of(path, journal.gateway, options);
    Machine machine = this_machine(options.json);
    machine.note = [](const std::string&) {}; // whoever uses the journal says it
    Journal::read(machine, journal.path).check_gateway(journal.gateway);
    return journal;
}

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
    if (options.retry_unknown + options.skip_unknown + options.all > 1) {
        throw input::InputError{"--all, --retry-unknown and --skip-unknown exclude each other"};
    }
    Application application(path, options);
    const int exit = application.read();
    return exit != input::exit_ok ? exit : application.make();
}

} // namespace vorcfg::site
