#include "outcome.hpp"

#include <algorithm>

namespace vorcfg {

struct OutcomeRow {
    std::string_view name;
    ExitCode exit;
};

static constexpr OutcomeRow table[] = {
    {"accepted", exit_ok},
    {"sent", exit_ok},
    {"done", exit_ok},
    {"nothing to do", exit_ok},
    {"dry run", exit_ok},
    {"refused", exit_refused},
    {"rejected", exit_usage},
    {"not delivered", exit_not_delivered},
    {"not sent", exit_not_sent},
    {"unread", exit_unread},
    {"unknown", exit_unknown},
    {"no endpoint", exit_unusable},
    {"contradiction", exit_contradiction},
};

std::string_view name_of(Outcome outcome)
{
    return table[std::size_t(outcome)].name;
}

ExitCode exit_of(Outcome outcome)
{
    return table[std::size_t(outcome)].exit;
}

static constexpr vor_int32 too_many_servers = -1151;

static std::string code_text(const Returned& back)
{
    if (!back.has_code) {
        return "";
    }
    const char* const meaning = back.code == too_many_servers ? ": more than four DNS servers" : "";
    return " (code " + std::to_string(back.code) + meaning + ')';
}

static std::string status_text(const Message& message)
{
    return message.answer_status ? "its answer carried status " + std::to_string(*message.answer_status)
                                 : "its answer carried no status";
}

static bool succeeded(const Returned& back)
{
    return back.code == 0 && !back.missing;
}

static bool refused(const Returned& back, std::int32_t manager_errno, const Message& message)
{
    static constexpr vor_int32 refusals[] = {-1001, -1002};
    const bool by_status = back.code == -1 && manager_errno != 0 && message.answer_status == manager_errno;
    return message.answer_status &&
           (by_status || std::find(std::begin(refusals), std::end(refusals), back.code) != std::end(refusals));
}

static std::string timer_text(const Observation& seen)
{
    return seen.timer ? "; timer of " + std::to_string(*seen.timer) + " ms started" : "";
}

static Verdict undelivered(const Message& message, const Returned& back, const Observation& seen)
{
    const std::string manager = manager_name(message.sap);
    if (message.timed_out) {
        return {Outcome::unknown,
                "unknown: no answer from " + manager + " in time, it may or may not have been done" + code_text(back)};
    }
    if (message.unserved) {
        return {Outcome::not_delivered,
                "not delivered: nobody listens" + timer_text(seen) + "; is " + manager + " running?"};
    }
    const std::string refused = message.way == Way::request ? "exchange refused" : "send refused";
    return {Outcome::not_delivered,
            "not delivered: " + refused + code_text(back) +
                (message.too_long ? "; the message is too long" : "; is " + manager + " running?")};
}

static Verdict answered(const Row& row, const Returned& back, std::int32_t manager_errno, const Message& message)
{
    const std::string manager = manager_name(message.sap);
    if (succeeded(back)) {
        return {Outcome::accepted, (back.fields.empty() ? "accepted by " : "answered by ") + manager};
    }
    if (refused(back, manager_errno, message)) {
        return {Outcome::refused, "refused by " + manager + ": status " + std::to_string(*message.answer_status)};
    }
    if ((row.marks & answer_unread) != 0) {
        return {Outcome::unread,
                "delivered to " + manager + ", verdict unread by this call (" + status_text(message) + ')'};
    }
    char id[16];
    std::snprintf(id, sizeof id, "0x%x", unsigned(message.answer_id.value_or(0)));
    return {Outcome::unread, "delivered to " + manager + ", its answer is not what this call reads (message " + id +
                                 ", " + status_text(message) + ')' + code_text(back)};
}

static Verdict judged_konfd(const Returned& back, const Observation& seen)
{
    if (back.code == 0) {
        return {Outcome::accepted, "accepted by konfd"};
    }
    if (seen.unconnected) {
        return {Outcome::not_delivered, "not delivered: no connection" + code_text(back) + "; is konfd running?"};
    }
    if (seen.messages.empty()) {
        return {Outcome::not_sent, "nothing was sent" + code_text(back)};
    }
    const Message& last = seen.messages.back();
    if (!last.delivered) {
        return {Outcome::not_delivered, "not delivered: send refused" + code_text(back)};
    }
    if (!last.answer) {
        return {Outcome::unknown,
                "unknown: no answer from konfd in time, it may or may not have been done" + code_text(back)};
    }
    if (!last.answer->starts_with("-o")) {
        return {Outcome::refused, "refused by konfd: answer " + quoted(*last.answer)};
    }
    return {Outcome::contradiction, "konfd agreed, yet the call failed" + code_text(back)};
}

static Verdict judged_messages(const Row& row, const Returned& back, std::int32_t manager_errno,
                               const Observation& seen)
{
    const Message& last = seen.messages.back();
    if (!last.delivered) {
        Verdict verdict = undelivered(last, back, seen);
        if (seen.messages.size() > 1) {
            verdict.text = "accepted by " + manager_name(seen.messages.front().sap) + ", but the notice to SAP " +
                           std::to_string(last.sap) +
                           (last.unserved ? " was not delivered: nobody listens" : " was refused" + code_text(back));
        }
        return verdict;
    }
    if (last.way == Way::request) {
        return answered(row, back, manager_errno, last);
    }
    if (!succeeded(back)) {
        return {Outcome::contradiction,
                "sent to " + manager_name(last.sap) + ", yet the call failed" + code_text(back)};
    }
    if (seen.messages.size() > 1) {
        return {Outcome::accepted, "accepted by " + manager_name(seen.messages.front().sap) + ", notice sent to SAP " +
                                       std::to_string(last.sap)};
    }
    return {Outcome::sent, "sent to " + manager_name(last.sap) + " one-way, no verdict will come" + timer_text(seen)};
}

static Verdict judged_local(const Row& row, const Returned& back, const Observation& seen)
{
    if ((row.marks & does_nothing) != 0) {
        return {Outcome::nothing_to_do, "nothing to do: this call does nothing"};
    }
    if (seen.trace_switched) {
        return {Outcome::done,
                "done: the platform's own trace of SAP " + std::to_string(*seen.trace_switched) + " is switched"};
    }
    if (row.channel != Channel::none) {
        return {Outcome::not_sent, "nothing was sent" + code_text(back)};
    }
    return succeeded(back) ? Verdict{Outcome::done, "done"}
                           : Verdict{Outcome::rejected, "not taken by the call" + code_text(back)};
}

Verdict judged(const Row& row, const Returned& back, std::int32_t manager_errno, const Observation& seen)
{
    if (row.channel == Channel::konfd) {
        return judged_konfd(back, seen);
    }
    return seen.messages.empty() ? judged_local(row, back, seen) : judged_messages(row, back, manager_errno, seen);
}

} // namespace vorcfg
