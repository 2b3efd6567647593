#include "gateway/gateway.hpp"

#include <utility>

#include <fmt/core.h>

#include "gateway/answer.hpp"
#include "tables/managers.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

// "ethmgr(7) 0x7003"
std::string label_of(const Message& message)
{
    return fmt::format("{} {:#x}", manager_label(message.sap), message.id);
}

Decision begin(const Message& message)
{
    Decision decision{.answered = message.answer_wanted, .answer_id = message.id};
    decision.record.sap = message.sap;
    decision.record.source = message.source;
    decision.record.id = message.id;
    decision.record.awaits = message.answer_wanted;
    return decision;
}

// The line up to what came of it.
void say(Decision& decision, std::string line)
{
    decision.outcome_at = line.size();
    decision.record.line = std::move(line);
}

Decision refuse(const Message& message, const Mismatch& complaint)
{
    Decision decision = begin(message);
    decision.record.status = complaint.status;
    decision.record.complaint = complaint.text;
    decision.record.complained = true;
    decision.answer = status_answer(complaint.status);
    say(decision, fmt::format("strict: {}: {}", label_of(message), complaint.text));
    if (message.answer_wanted) {
        decision.set_outcome(fmt::format("status {}", static_cast<std::int32_t>(complaint.status)));
    }
    return decision;
}

} // namespace

std::vector<std::uint8_t> status_answer(std::int32_t status)
{
    return Answer(4).put(0, "status", status).bytes;
}

void Decision::set_outcome(std::string_view outcome)
{
    record.line.resize(outcome_at);
    record.line += fmt::format(" -> {}", outcome);
}

Decision Gateway::accept(const Message& message, Decoded decoded)
{
    const MessageRow& row = *decoded.row;
    if (row.query == nullptr && !state_.has_room(decoded)) {
        return refuse(message, {no_room, "nothing more can be kept (vorsim reset makes room)"});
    }
    Decision decision = begin(message);
    Record& record = decision.record;
    const std::string values = line_of(decoded.values);
    say(decision,
        fmt::format("{} {}  {}{}{}", label_of(message), row.call, decoded.object, values.empty() ? "" : ": ", values));
    if (row.query != nullptr) {
        Answer answer = row.query(decoded, state_, measurements_);
        decision.answer = std::move(answer.bytes);
        decision.set_outcome(line_of(answer.values));
        record.answer_values = std::move(answer.values);
    } else if (row.exchange.answered) {
        decision.row_to_keep = &row;
        decision.answer_id = row.exchange.answer_id;
        decision.answer = status_answer(row.exchange.accepted);
        decision.set_outcome(fmt::format("status {}", row.exchange.accepted));
        record.status = row.exchange.accepted;
    } else {
        decision.row_to_keep = &row;
        decision.set_outcome("no answer awaited");
    }
    record.call = row.call;
    record.object = std::move(decoded.object);
    record.values = std::move(decoded.values);
    return decision;
}

void Gateway::settle(const Decision& decision)
{
    if (decision.row_to_keep != nullptr) {
        const Record& record = decision.record;
        state_.keep({.sap = record.sap, .row = decision.row_to_keep, .object = record.object, .values = record.values});
    }
}

Decision Gateway::judge(const Message& message)
{
    const auto matched = match(message);
    const auto* const complaint = std::get_if<Mismatch>(&matched);
    return complaint != nullptr ? refuse(message, *complaint)
                                : accept(message, decode(message.sap, std::get<Match>(matched), show_secrets_));
}

} // namespace vorsim
