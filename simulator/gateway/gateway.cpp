#include "gateway/gateway.hpp"

#include <utility>

#include "gateway/answer.hpp"

namespace vorsim::gateway {
namespace {

Decision begin(const Message& message)
{
    Decision decision{.answered = message.answer_wanted, .answer_id = message.id};
    decision.record.sap = message.sap;
    decision.record.source = message.source;
    decision.record.id = message.id;
    decision.record.awaits = message.answer_wanted;
    return decision;
}

Decision refuse(const Message& message, const Mismatch& complaint)
{
    Decision decision = begin(message);
    decision.record.status = complaint.status;
    decision.record.complaint = complaint.text;
    decision.record.complained = true;
    decision.answer = status_answer(complaint.status);
    return decision;
}

} // namespace

std::vector<std::uint8_t> status_answer(std::int32_t status)
{
    return Answer(4).put(0, "status", status).bytes;
}

Decision Gateway::accept(const Message& message, Decoded decoded)
{
    const tables::MessageRow& row = *decoded.row;
    if (row.query == nullptr && !state_.has_room(decoded)) {
        return refuse(message, {no_space, "no room for more settings; vorsim reset clears them"});
    }
    Decision decision = begin(message);
    values::Record& record = decision.record;
    if (row.query != nullptr) {
        Answer answer = row.query(decoded, state_, measurements_);
        decision.answer = std::move(answer.bytes);
        record.answer_values = std::move(answer.values);
    } else if (row.exchange.answered) {
        decision.row_to_keep = &row;
        decision.answer_id = row.exchange.answer_id;
        decision.answer = status_answer(row.exchange.accepted);
        record.status = row.exchange.accepted;
    } else {
        decision.row_to_keep = &row;
    }
    record.call = row.call;
    record.object = std::move(decoded.object);
    record.values = std::move(decoded.values);
    return decision;
}

void Gateway::store(const Decision& decision)
{
    if (decision.row_to_keep != nullptr) {
        const values::Record& record = decision.record;
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

} // namespace vorsim::gateway
