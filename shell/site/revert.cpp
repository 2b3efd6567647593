#include <cstdio>

#include <fmt/core.h>

#include "output/output.hpp"
#include "site/commands.hpp"
#include "site/pending.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

struct Call {
    const Entry* undone;
    Planned planned;
};

// What is to be made, all of it known before the first call; of the rest it is
// said why it is left.
std::vector<Call> calls_back(const std::vector<History::Undo>& undos)
{
    std::vector<Call> calls;
    for (const History::Undo& undo : undos) {
        const CallBegun& begun = undo.entry->begun;
        std::string why;
        try {
            if (undo.before != nullptr) {
                calls.push_back({undo.entry, planned(undo.before->begun.key)});
                calls.back().planned.place = {begun.file, begun.line, 0};
                continue;
            }
        } catch (const Complaint& complaint) { // what another version kept
            why = ": " + complaint.text;
        }
        vor::print_line(stdout, fmt::format("{}:{}: {}: cannot be taken back{}", vor::printable(begun.file), begun.line,
                                            name_of(begun.key), why));
    }
    return calls;
}

} // namespace

int take_back(Journal& journal, const Options& options)
{
    const auto undos = journal.history().undos();
    std::vector<Call> calls = calls_back(undos);
    const std::size_t kept = undos.size() - calls.size();
    const auto summary = [&](const Tally& tally, std::size_t left) {
        return fmt::format("{}: {} accepted, {} sent, {} unread, {} failed, {} not made: {}{}\n",
                           vor::printable(journal.path()), tally.accepted, tally.sent, tally.unread,
                           tally.failed.size(), left,
                           tally.failed.empty() && left == 0 ? "taken back" : "not all is taken back",
                           kept != 0 ? fmt::format("; {} cannot be taken back", kept) : "");
    };
    Options going_on = options;
    going_on.keep_going = true;
    const Entry* undone = nullptr;
    Account account(going_on, calls.size(), summary);
    Making making(going_on, calls.size(), account,
                  {.before = [&](const Planned& planned) { journal.begin(planned, undone); },
                   .after = [&](const Planned& planned, const Report& report) { journal.end(planned, report); },
                   .hang_up_ends = false});
    for (Call& call : calls) {
        undone = call.undone;
        if (!making.make(call.planned) && making.ended()) {
            break;
        }
    }
    const int exit = making.finish();
    if (making.tally().failed.empty() && exit != exit_ended) {
        journal.decide(false);
    }
    return exit;
}

int run_revert(const std::string& path, const Options& options)
{
    Journal journal = Journal::reopen(path);
    if (!journal.history().pending()) {
        throw Complaint{fmt::format("{}: nothing waits to be taken back", path), exit_journal};
    }
    return take_back(journal, options);
}

} // namespace vorcfg
