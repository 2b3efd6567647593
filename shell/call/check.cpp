#include "call/check.hpp"

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "call/run.hpp"
#include "input/question.hpp"
#include "output/output.hpp"
#include "text/text.hpp"

namespace vorcfg {

Batch batch_of(const std::string& path, const Options& options)
{
    if (options.password) {
        throw Complaint{
            "--password-file and --password-stdin are for one call; a line of a batch says itself where its "
            "secret is: @FILE, - or ?"};
    }
    if (path == "-" && options.in_session) {
        throw Complaint{"standard input is the session itself"};
    }
    Variables variables;
    for (const std::string& definition : options.sets) {
        variables.set(definition);
    }
    for (const std::string& file : options.vars) {
        variables.read(file);
    }
    return Batch::of(path, std::move(variables));
}

void check_confirmed(const Planned& planned, const Options& options)
{
    if (planned.row->has(confirmed) && !options.yes && !options.dry_run) {
        throw Complaint{"is made only with --yes", exit_usage, {}, 1, planned.row->full_name(), planned.place};
    }
}

std::string named(const Planned& planned)
{
    return fmt::format("{} (line {})", planned.row->full_name(), planned.place.line);
}

void ask_before(const std::vector<std::string>& cutting, const Options& options)
{
    if (cutting.empty() || options.yes || options.dry_run || !at_terminal()) {
        return;
    }
    if (!agreed(fmt::format("{} may cut the link that you work over; go on?", fmt::join(cutting, ", ")))) {
        throw Complaint{"nothing was sent"};
    }
}

int check(Batch& batch, const Options& options, const std::function<void(const Planned&)>& each)
{
    int exit = exit_ok;
    for (bool more = true; more;) {
        try {
            const auto planned = batch.next();
            more = planned.has_value();
            if (more) {
                each(*planned);
            }
        } catch (const Complaint& complaint) {
            exit = complain(complaint, options.json);
        }
    }
    for (const Complaint& complaint : batch.unused_variables()) {
        exit = complain(complaint, options.json);
    }
    return exit;
}

int run_check(const std::string& path, const Options& options)
{
    Batch batch = batch_of(path, options);
    batch.leave_input();
    std::size_t calls = 0;
    if (check(batch, options, [&](const Planned&) { calls++; }) != exit_ok) {
        return exit_usage;
    }
    vor::print(stdout, options.json ? checked_json(batch.name(), calls)
                                    : fmt::format("{}: {}, nothing to complain about\n", vor::printable(batch.name()),
                                                  vor::counted(calls, "call")));
    return exit_ok;
}

} // namespace vorcfg
