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

Judgement begin(const Message& message)
{
    Judgement judgement{.answered = message.answer_wanted, .answer_id = message.id};
    judgement.record.sap = message.sap;
    judgement.record.source = message.source;
    judgement.record.id = message.id;
    judgement.record.awaits = message.answer_wanted;
    return judgement;
}

// The line up to what came of it.
void say(Judgement& judgement, std::string line)
{
    judgement.outcome_at = line.size();
    judgement.record.line = std::move(line);
}

Judgement refuse(const Message& message, const Complaint& complaint)
{
    Judgement judgement = begin(message);
    judgement.record.status = complaint.status;
    judgement.record.complaint = complaint.text;
    judgement.record.complained = true;
    judgement.answer = status_answer(complaint.status);
    say(judgement, fmt::format("strict: {}: {}", label_of(message), complaint.text));
    if (message.answer_wanted) {
        judgement.comes_to(fmt::format("status {}", static_cast<std::int32_t>(complaint.status)));
    }
    return judgement;
}

} // namespace

std::vector<std::uint8_t> status_answer(std::int32_t status)
{
    return Answer(4).put(0, "status", status).bytes;
}

void Judgement::comes_to(std::string_view outcome)
{
    record.line.resize(outcome_at);
    record.line += fmt::format(" -> {}", outcome);
}

Judgement Gateway::accept(const Message& message, Decoded decoded)
{
    const Row& row = *decoded.row;
    if (row.query == nullptr && !state_.has_room(decoded)) {
        return refuse(message, {no_room, "nothing more can be kept (vorsim reset makes room)"});
    }
    Judgement judgement = begin(message);
    Record& record = judgement.record;
    const std::string values = line_of(decoded.values);
    say(judgement,
        fmt::format("{} {}  {}{}{}", label_of(message), row.call, decoded.object, values.empty() ? "" : ": ", values));
    if (row.query != nullptr) {
        Answer answer = row.query(decoded, state_, measurements_);
        judgement.answer = std::move(answer.bytes);
        judgement.comes_to(line_of(answer.values));
        record.answer_values = std::move(answer.values);
    } else if (row.exchange.answered) {
        judgement.told = &row;
        judgement.answer_id = row.exchange.answer_id;
        judgement.answer = status_answer(row.exchange.accepted);
        judgement.comes_to(fmt::format("status {}", row.exchange.accepted));
        record.status = row.exchange.accepted;
    } else {
        judgement.told = &row;
        judgement.comes_to("no answer awaited");
    }
    record.call = row.call;
    record.object = std::move(decoded.object);
    record.values = std::move(decoded.values);
    return judgement;
}

void Gateway::settle(const Judgement& judgement)
{
    if (judgement.told != nullptr) {
        const Record& told = judgement.record;
        state_.keep({.sap = told.sap, .row = judgement.told, .object = told.object, .values = told.values});
    }
}

Judgement Gateway::judge(const Message& message)
{
    const auto matched = match(message);
    const auto* const complaint = std::get_if<Complaint>(&matched);
    return complaint != nullptr ? refuse(message, *complaint)
                                : accept(message, decode(message.sap, std::get<Match>(matched), show_secrets_));
}

} // namespace vorsim
