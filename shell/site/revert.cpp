#include "site/revert.hpp"

#include <algorithm>
#include <chrono>

#include <fmt/core.h>

#include "site/show.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

using vor::Json;

namespace {

struct RevertingCall {
    const Undo* undo;
    call::PreparedCall call;
};

// All of them prepared before the first is made.
std::vector<RevertingCall> reverting_calls(const std::vector<Undo>& undos)
{
    std::vector<RevertingCall> calls;
    for (const Undo& undo : undos) {
        if (!undo.can_still_be_reverted()) {
            continue;
        }
        try {
            const CallBegun& begun = undo.calls.front()->begun;
            calls.push_back({&undo, call::prepare(undo.before->begun.key)});
            calls.back().call.place = {begun.file, begun.line, 0};
        } catch (const input::InputError&) { // NOLINT(bugprone-empty-catch): of another version's journal
        }
    }
    return calls;
}

// Each call is reported by its line in the ledger.
class Silence final : public call::Reporter {
public:
    bool report_call(const call::PreparedCall&, const call::CallResult&, std::size_t) override { return true; }
    void report_wait(unsigned) override {}
    int finish(const call::Tally& tally, std::size_t, bool) override { return tally.worst; }
};

// Why a call was not reverted.
std::string obstacle(const Undo& undo)
{
    const call::CallKey& key = undo.calls.back()->begun.key;
    if (undo.revert != nullptr) {
        return undo.revert->ended.verdict.empty() ? "no verdict" : undo.revert->ended.verdict;
    }
    if (undo.before != nullptr) {
        return "not tried yet";
    }
    if (key.row->has(rows::acts)) {
        return "an act cannot be undone";
    }
    return key.secret ? "its secret is not in the journal" : "its earlier value is not known";
}

// "can_id 7, option 1", or another call
std::string before_text(const Undo& undo)
{
    const call::CallKey& before = undo.before->begun.key;
    const std::string values = values_of(before);
    return before.row == undo.calls.back()->begun.key.row
               ? values
               : fmt::format("{}{}{}", call::name_of(before), values.empty() ? "" : ", ", values);
}

std::size_t calls_of(const std::vector<Undo>& undos, bool reverted)
{
    std::size_t calls = 0;
    for (const Undo& undo : undos) {
        calls += undo.is_reverted() == reverted ? undo.calls.size() : 0;
    }
    return calls;
}

template <class Selected>
std::vector<std::size_t> lines_of(const std::vector<Undo>& undos, Selected selected)
{
    std::vector<std::size_t> lines;
    for (const Undo& undo : undos) {
        for (const Entry* const call : selected(undo) ? undo.calls : std::vector<const Entry*>()) {
            lines.push_back(call->begun.line);
        }
    }
    std::ranges::sort(lines);
    return lines;
}

} // namespace

Reverting revert(Journal& journal, const input::Options& options, call::Signals ends,
                 const std::function<void(const Undo&)>& each, call::Caller* caller)
{
    const std::vector<Undo> undos = journal.ledger().undos();
    std::vector<RevertingCall> calls = reverting_calls(undos);
    input::Options all = options;
    all.keep_going = true;
    all.dry_run = false;
    const Undo* undo = nullptr;
    const auto report = [&] {
        Undo tried = *undo;
        tried.revert = &journal.ledger().entries().back();
        if (each) {
            each(tried);
        }
    };
    Silence silence;
    call::BatchRunner runner(
        all, calls.size(), silence,
        {.before = [&](const call::PreparedCall& call) { journal.begin_revert(call, *undo->calls.front()); },
         .after =
             [&](const call::PreparedCall& call, const call::CallResult& result) {
                 journal.end(call, result);
                 report();
             },
         .ends = ends,
         .caller = caller});
    for (RevertingCall& each_call : calls) {
        undo = each_call.undo;
        if (!runner.make(each_call.call) && runner.signal() != 0) {
            break;
        }
    }
    const std::vector<Undo> now = journal.ledger().undos();
    if (!reverting_calls(now).empty()) {
        return runner.signal() != 0 ? Reverting::interrupted : Reverting::later;
    }
    journal.append_or_keep(ApplyDecided{.confirmed = false, .at = journal.machine().clock.stamp()});
    return Reverting::done;
}

void require_recorded(Journal& journal)
{
    if (!journal.write_kept()) {
        throw input::InputError{
            .text = fmt::format("{}: what was reverted could not be recorded, the disk is full", journal.path()),
            .exit = input::exit_journal,
            .hint = fmt::format("make room, then run vorcfg revert {} again", journal.path())};
    }
}

std::optional<ConfirmedApply> confirmed_apply_of(const Journal& journal)
{
    const Ledger& ledger = journal.ledger();
    const Moment now = journal.now();
    const auto confirmation = ledger.confirmation(now);
    if (!confirmation) {
        return std::nullopt;
    }
    const ApplyPending& pending = *ledger.pending();
    return ConfirmedApply{.journal = journal.path(),
                          .gateway = ledger.gateway(),
                          .confirmation = *confirmation,
                          .until = pending.until,
                          .left = ledger.time_left(now),
                          .has_waiter = has_waiter(journal.path()),
                          .restarted = !pending.boot.empty() && pending.boot != now.boot,
                          .undos = ledger.undos()};
}

int ConfirmedApply::exit() const
{
    switch (confirmation) {
    case Confirmation::confirmed:
        return input::exit_ok;
    case Confirmation::reverted:
        return input::exit_ended;
    case Confirmation::partly_reverted:
        return input::exit_partly_reverted;
    default:
        return input::exit_due;
    }
}

std::string time_text(std::chrono::milliseconds time)
{
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(time).count();
    constexpr auto minute = 60;
    constexpr auto hour = 3600;
    const auto two = [](auto many, const char* unit, auto few, const char* smaller) {
        return fmt::format("{} {}{}", many, unit, few != 0 ? fmt::format(" {} {}", few, smaller) : "");
    };
    if (seconds >= hour) {
        return two(seconds / hour, "h", seconds % hour / minute, "min");
    }
    return seconds >= minute ? two(seconds / minute, "min", seconds % minute, "s") : fmt::format("{} s", seconds);
}

std::string text_of(const ConfirmedApply& apply)
{
    const auto failed = [](const Undo& undo) {
        return undo.revert != nullptr && undo.revert->ended.number != 0 && !undo.is_reverted();
    };
    const auto cannot = [](const Undo& undo) { return undo.before == nullptr; };
    const auto perhaps = [](const Undo& undo) { return !undo.is_reverted() && undo.may_be_reverted(); };
    const auto not_reverted = [](const Undo& undo) { return !undo.may_be_reverted(); };
    const std::size_t reverted = calls_of(apply.undos, true);
    const bool none_can = std::ranges::all_of(apply.undos, cannot);
    std::string text;
    switch (apply.confirmation) {
    case Confirmation::waiting:
        if (none_can) {
            return fmt::format("not confirmed yet, but {} cannot be reverted",
                               output::lines_text(lines_of(apply.undos, cannot)));
        }
        text = fmt::format("not confirmed yet, the last apply will be reverted at {}, in {}", second_of(apply.until),
                           time_text(apply.left));
        if (const auto lines = lines_of(apply.undos, cannot); !lines.empty()) {
            text += fmt::format(", but not {}", output::lines_text(lines));
        }
        return text +
               (apply.has_waiter ? "" : "; no process waits for that: after it, vorcfg revert --expired reverts");
    case Confirmation::expired:
        return fmt::format("expired and not yet reverted: the last apply was not confirmed {}{}",
                           apply.restarted ? "before the gateway restarted" : "by " + second_of(apply.until),
                           std::ranges::any_of(apply.undos, failed) ? "; reverting it failed so far" : "");
    case Confirmation::confirmed:
        return "confirmed";
    case Confirmation::reverted:
        return fmt::format("reverted: {}", vor::counted(reverted, "call"));
    default:
        text = reverted != 0 ? fmt::format("partly reverted: {}", vor::counted(reverted, "call")) : "";
        if (const auto lines = lines_of(apply.undos, not_reverted); !lines.empty()) {
            text += fmt::format("{}{}", reverted != 0 ? ", but not " : "not reverted: ", output::lines_text(lines));
        }
        if (const auto lines = lines_of(apply.undos, perhaps); !lines.empty()) {
            text += fmt::format("{}{} may have been reverted", text.empty() ? "" : "; ", output::lines_text(lines));
        }
        return text;
    }
}

std::string hint_for(const ConfirmedApply& apply)
{
    switch (apply.confirmation) {
    case Confirmation::waiting:
        return fmt::format("vorcfg confirm {0} to keep the changes, vorcfg revert {0} to undo them", apply.journal);
    case Confirmation::expired:
        if (calls_of(apply.undos, true) != 0) {
            return fmt::format("vorcfg revert {0} to undo the rest, vorcfg confirm {0} to keep it", apply.journal);
        }
        return fmt::format("vorcfg revert {0} to undo the changes, vorcfg confirm {0} to keep them", apply.journal);
    default:
        return "";
    }
}

input::InputError error_of(const ConfirmedApply& apply)
{
    return {.text = fmt::format("{}: {}", apply.journal, text_of(apply)),
            .exit = input::exit_journal,
            .hint = hint_for(apply)};
}

// What is reverted unless it is confirmed, and has not been yet.
Json calls_to_decide(const std::vector<Undo>& undos)
{
    Json calls = Json::array();
    for (const Undo& undo : undos) {
        if (!undo.is_reverted()) {
            const CallBegun& begun = undo.calls.back()->begun;
            calls.push_back(
                {{"line", begun.line}, {"call", begun.key.row->full_name()}, {"arguments", values_json(begun.key)}});
        }
    }
    return calls;
}

Json json_of(const ConfirmedApply& apply)
{
    Json json = output::record("confirmation");
    json["journal"] = apply.journal;
    json.add("gateway", apply.gateway);
    json["state"] = name_of(apply.confirmation);
    if (apply.confirmation == Confirmation::waiting || apply.confirmation == Confirmation::expired) {
        json["until"] = apply.until;
        json["seconds_left"] = std::max<std::int64_t>(std::chrono::ceil<std::chrono::seconds>(apply.left).count(), 0);
        json["has_waiter"] = apply.has_waiter;
        json["calls"] = calls_to_decide(apply.undos);
        json["hint"] = hint_for(apply);
    }
    json["reverted"] = calls_of(apply.undos, true);
    if (apply.confirmation == Confirmation::partly_reverted) {
        json["not_reverted"] = calls_of(apply.undos, false);
        json["lines_not_reverted"] =
            Json::array(lines_of(apply.undos, [](const Undo& undo) { return !undo.is_reverted(); }));
    }
    return json;
}

void print(const ConfirmedApply& apply, bool json, std::FILE* to)
{
    if (json) {
        vor::print(stdout, output::line_of(json_of(apply)));
        return;
    }
    const bool stands_alone = to == stdout;
    vor::print_line(
        to, fmt::format("{}{}: {}", stands_alone ? "" : "vorcfg: ", vor::printable(apply.journal), text_of(apply)));
    if (const std::string hint = hint_for(apply); !hint.empty()) {
        vor::print_line(to, fmt::format("hint: {}", hint));
    }
}

void print_line(const Undo& undo, bool json)
{
    for (const Entry* const call : undo.calls) {
        const CallBegun& begun = call->begun;
        if (!json) {
            vor::print_line(stdout, fmt::format("{}:{}: {}: {}", vor::printable(begun.file), begun.line,
                                                call::name_of(begun.key),
                                                undo.is_reverted() ? "reverted to " + before_text(undo)
                                                                   : "not reverted: " + obstacle(undo)));
            continue;
        }
        Json line = output::record("revert_line", {begun.file, begun.line});
        line["call"] = begun.key.row->full_name();
        line["arguments"] = values_json(begun.key);
        line["state"] = undo.is_reverted() ? "reverted" : "not reverted";
        if (undo.before != nullptr) {
            line["before"] = {{"call", undo.before->begun.key.row->full_name()},
                              {"arguments", values_json(undo.before->begun.key)}};
        }
        if (undo.is_reverted()) {
            line["verdict"] = undo.revert->ended.verdict;
        } else {
            line["obstacle"] = obstacle(undo);
        }
        vor::print(stdout, output::line_of(line));
    }
}

void print_lines(const ConfirmedApply& apply, bool json)
{
    for (const Undo& undo : apply.undos) {
        print_line(undo, json);
    }
}

} // namespace vorcfg::site
