#include "call/verdict.hpp"

#include <algorithm>

#include <device_mgmt/types.h>
#include <fmt/core.h>

#include "text/text.hpp"

namespace vorcfg::call {

namespace {

struct OutcomeRow {
    std::string_view name; // in JSON and in journals
    input::ExitCode exit;
    std::string_view total; // in a total, after its number
    std::string_view lead;  // how the verdict's text begins, where a column has the name beside it
    std::string_view about;
};

constexpr OutcomeRow outcomes[] = {
    {"accepted", input::exit_ok, "accepted", "accepted by ", "the manager or konfd reported success"},
    {"sent", input::exit_ok, "sent", "sent to ", "sent one-way, no verdict will come"},
    {"done", input::exit_ok, "handled locally", "done: ", "needed no message"},
    {"nothing to do", input::exit_ok, "handled locally", "nothing to do: ", "the call does nothing"},
    {"dry run", input::exit_ok, "not sent (dry run)", "dry run, ", "tried only, nothing was sent"},
    {"refused", input::exit_refused, "refused", "refused by ", "the manager or konfd reported a failure"},
    {"rejected", input::exit_usage, "rejected", "rejected by ", "refused by the call itself, nothing was sent"},
    {"not delivered", input::exit_not_delivered, "not delivered",
     "not delivered: ", "the platform refused it, or nothing listens"},
    {"not sent", input::exit_not_sent, "not sent", "not sent ", "the call ended before anything was sent"},
    {"unread", input::exit_unread, "unread", "delivered to ", "delivered, but the call cannot read the verdict"},
    {"unknown", input::exit_unknown, "unknown", "unknown: ", "no answer in time: it may or may not have been done"},
    {"no endpoint", input::exit_unusable, "not sent", "not sent: ", "the platform cannot be used, nothing was sent"},
    {"contradiction", input::exit_contradiction, "contradictory", "", "the call's result contradicts its messages"},
};
static_assert(std::size(outcomes) == outcome_count);

std::string code_text(const rows::Returned& back)
{
    return back.code ? fmt::format(" (code {})", *back.code) : "";
}

std::string status_text(const Message& message)
{
    return message.answer_status ? fmt::format("its answer carried status {}", *message.answer_status)
                                 : "its answer carried no status";
}

bool refused(const rows::Returned& back, std::int32_t manager_errno, const Message& message)
{
    static constexpr std::int32_t refusals[] = {VOR_CODE_LATITUDE, VOR_CODE_LONGITUDE};
    const std::int32_t code = back.code.value_or(0);
    const bool by_status = code == VOR_CODE_REFUSED && manager_errno != 0 && message.answer_status == manager_errno;
    return message.answer_status && (by_status || std::ranges::find(refusals, code) != std::end(refusals));
}

std::string timer_text(const Observation& seen)
{
    return seen.timer ? fmt::format("; timer of {} ms started", *seen.timer) : "";
}

Verdict nothing_listens(const Observation& seen)
{
    return {Outcome::not_delivered, fmt::format("not delivered: nothing listens in {}", vor::printable(seen.deserted)),
            "start vorsim, or set VORINFRA_DIR"};
}

std::string running_hint(std::string_view manager)
{
    return fmt::format("is {} running?", manager);
}

Verdict undelivered(const Message& message, const rows::Returned& back, const Observation& seen)
{
    const std::string manager = manager_name(message.sap);
    if (message.timed_out) {
        return {Outcome::unknown, fmt::format("unknown: no answer from {} in time, it may or may not have been done{}",
                                              manager, code_text(back))};
    }
    if (!seen.deserted.empty() && message.unfit == Unfit::no && !seen.timer) {
        return nothing_listens(seen);
    }
    if (message.unserved) {
        return {Outcome::not_delivered, fmt::format("not delivered: nothing listens{}", timer_text(seen)),
                running_hint(manager)};
    }
    const bool fits = message.unfit == Unfit::no;
    return {Outcome::not_delivered,
            fmt::format("not delivered: {} refused{}{}", message.way == Way::request ? "exchange" : "send",
                        code_text(back), fits ? "" : "; the message is too long"),
            fits ? running_hint(manager) : ""};
}

Verdict answered(const rows::Row& row, const rows::Returned& back, std::int32_t manager_errno, const Message& message)
{
    const std::string manager = manager_name(message.sap);
    if (back.succeeded()) {
        return {Outcome::accepted, fmt::format("{} by {}", back.fields.empty() ? "accepted" : "answered", manager)};
    }
    if (refused(back, manager_errno, message)) {
        return {Outcome::refused, fmt::format("refused by {}: status {}", manager, *message.answer_status)};
    }
    if (row.has(rows::answer_unread) && message.answer_id == message.id) {
        return message.answer_status.value_or(0) == 0
                   ? Verdict{Outcome::unread, fmt::format("delivered to {}, verdict unread by this call ({})", manager,
                                                          status_text(message))}
                   : Verdict{Outcome::refused,
                             fmt::format("refused by {}: status {} (seen in the answer; the call does not read it)",
                                         manager, *message.answer_status)};
    }
    return {Outcome::unread, fmt::format("delivered to {}, its answer is not what this call reads (message 0x{:x}{}){}",
                                         manager, message.answer_id.value_or(0),
                                         row.answers_record ? "" : ", " + status_text(message), code_text(back))};
}

bool konfd_agreed(const Message& message)
{
    return message.answer == "-o";
}

bool konfd_refused(const Message& message)
{
    return message.answer == "-e";
}

// What became of one of several commands.
std::string fate_of(const Message& message)
{
    if (!message.delivered) {
        return "was not delivered";
    }
    if (!message.answer) {
        return "has no answer";
    }
    return konfd_agreed(message) ? "was accepted" : fmt::format("has the answer {}", vor::quoted(*message.answer));
}

// One answer may stand for both commands.
Verdict judged_commands(const Message& first, const Message& second)
{
    if (!first.answer && konfd_refused(second)) {
        return {Outcome::unknown, "unknown: konfd refused one of the two commands (answer \"-e\"), the first may have "
                                  "been carried out"};
    }
    return {Outcome::unknown,
            fmt::format("unknown: the first command to konfd {}, the second {}", fate_of(first), fate_of(second))};
}

Verdict judged_konfd(const rows::Returned& back, const Observation& seen)
{
    const std::string code = code_text(back);
    const auto& messages = seen.messages;
    if (back.code == 0 && (messages.empty() || konfd_agreed(messages.back()))) {
        return {Outcome::accepted, "accepted by konfd"};
    }
    if (seen.unconnected && !seen.deserted.empty()) {
        return nothing_listens(seen);
    }
    if (seen.unconnected) {
        return {Outcome::not_delivered, fmt::format("not delivered: no connection{}", code), running_hint("konfd")};
    }
    if (messages.empty()) {
        return {Outcome::not_sent, fmt::format("not sent{}", code)};
    }
    const Message& last = messages.back();
    if (konfd_agreed(last) && !konfd_refused(messages.front())) {
        return {Outcome::contradiction, fmt::format("konfd agreed, yet the call failed{}", code)};
    }
    if (messages.size() > 1) {
        const Message& first = messages.front();
        const bool unanswered = !first.answer && last.delivered && !konfd_refused(last); // in a way that can be read
        if (!unanswered && !(konfd_refused(first) && konfd_refused(last))) {
            return judged_commands(first, last);
        }
    }
    if (!last.delivered) {
        return {Outcome::not_delivered, fmt::format("not delivered: send refused{}", code)};
    }
    if (!last.answer) {
        return {Outcome::unknown,
                fmt::format("unknown: no answer from konfd in time, it may or may not have been done{}", code)};
    }
    if (konfd_refused(last)) {
        return {Outcome::refused, fmt::format("refused by konfd: answer {}", vor::quoted(*last.answer))};
    }
    return {Outcome::unread,
            fmt::format("delivered to konfd, its answer is neither -o nor -e: {}{}", vor::quoted(*last.answer), code)};
}

Verdict judged_messages(const rows::Row& row, const rows::Returned& back, std::int32_t manager_errno,
                        const Observation& seen)
{
    const Message& last = seen.messages.back();
    const bool notice = seen.messages.size() > 1;
    const std::string first_manager = manager_name(seen.messages.front().sap);
    if (!last.delivered && notice) {
        return {Outcome::unknown,
                fmt::format("unknown: accepted by {}, but the notice to SAP {} was not delivered: {}", first_manager,
                            last.sap, last.unserved ? "nothing listens" : "send refused" + code_text(back))};
    }
    if (!last.delivered) {
        return undelivered(last, back, seen);
    }
    if (last.way == Way::request) {
        return answered(row, back, manager_errno, last);
    }
    const std::string manager = manager_name(last.sap);
    if (!back.succeeded()) {
        return {Outcome::contradiction, fmt::format("sent to {}, yet the call failed{}", manager, code_text(back))};
    }
    if (notice) {
        return {Outcome::accepted, fmt::format("accepted by {}, notice sent to SAP {}", first_manager, last.sap)};
    }
    return {Outcome::sent, fmt::format("sent to {} one-way, no verdict will come{}", manager, timer_text(seen))};
}

Verdict judged_local(const rows::Row& row, const rows::Returned& back, const Observation& seen)
{
    if (row.has(rows::does_nothing)) {
        return {Outcome::nothing_to_do, "nothing to do: this call does nothing"};
    }
    if (seen.trace_switched) {
        return {Outcome::done,
                fmt::format("done: the platform's own trace of SAP {} was switched", *seen.trace_switched)};
    }
    if (row.channel != rows::Channel::none) {
        return {Outcome::not_sent, fmt::format("not sent{}", code_text(back))};
    }
    return back.succeeded() ? Verdict{Outcome::done, "done"}
                            : Verdict{Outcome::rejected, fmt::format("rejected by the call{}", code_text(back))};
}

} // namespace

State state_of(const rows::Row& row, Outcome outcome, const Observation& seen)
{
    switch (outcome) {
    case Outcome::accepted:
    case Outcome::done:
    case Outcome::nothing_to_do:
        return State::accepted;
    case Outcome::sent:
        return State::sent;
    case Outcome::refused:
        return State::refused;
    case Outcome::unread: {
        const Message& last = seen.messages.back();
        const bool done = row.has(rows::answer_unread) && last.answer_id == last.id && last.answer_status == 0;
        return done ? State::unread : State::unknown;
    }
    case Outcome::unknown:
    case Outcome::contradiction:
        return State::unknown;
    default:
        return State::not_delivered;
    }
}

std::string_view name_of(State state)
{
    static constexpr std::string_view names[] = {"accepted", "sent", "unread", "refused", "not delivered", "unknown"};
    return names[static_cast<std::size_t>(state)];
}

std::string_view name_of(Outcome outcome)
{
    return outcomes[static_cast<std::size_t>(outcome)].name;
}

std::string_view about(Outcome outcome)
{
    return outcomes[static_cast<std::size_t>(outcome)].about;
}

std::string_view total_of(Outcome outcome)
{
    return outcomes[static_cast<std::size_t>(outcome)].total;
}

std::string_view detail_of(const Verdict& verdict)
{
    const std::string_view lead = outcomes[static_cast<std::size_t>(verdict.outcome)].lead;
    const std::string_view text = verdict.text;
    return text.substr(text.starts_with(lead) ? lead.size() : 0);
}

input::ExitCode exit_of(Outcome outcome)
{
    return outcomes[static_cast<std::size_t>(outcome)].exit;
}

Verdict judged(const rows::Row& row, const rows::Returned& back, std::int32_t manager_errno, const Observation& seen)
{
    if (row.channel == rows::Channel::konfd) {
        return judged_konfd(back, seen);
    }
    return seen.messages.empty() ? judged_local(row, back, seen) : judged_messages(row, back, manager_errno, seen);
}

} // namespace vorcfg::call
