#include "gateway/gateway.hpp"

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

Judgement begin(const Message& message, Detail detail)
{
    Judgement judgement{
        .answered = message.answer_wanted, .answer_id = message.id, .answer = {}, .report = {{}, Json::object()}};
    if (detail == Detail::recorded) {
        judgement.report.record = {
            {"sap", message.sap}, {"source", message.source}, {"id", fmt::format("{:#x}", message.id)}};
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
    report.line.resize(outcome_at);
    report.line += fmt::format(" -> {}", outcome);
}

Judgement Gateway::refuse(const Message& message, const Complaint& complaint, Detail detail)
{
    ++complaints_;
    const auto status = static_cast<std::int32_t>(complaint.status);
    Judgement judgement = begin(message, detail);
    judgement.answer = status_answer(status);
    judgement.report.line = fmt::format("strict: {}: {}", label_of(message), complaint.text);
    judgement.outcome_at = judgement.report.line.size();
    if (message.answer_wanted) {
        judgement.comes_to(fmt::format("status {}", status));
    }
    judgement.report.record["complaint"] = complaint.text;
    judgement.report.record["status"] = status;
    return judgement;
}

Judgement Gateway::accept(const Message& message, Decoded decoded, Detail detail)
{
    const Row& row = *decoded.row;
    Judgement judgement = begin(message, detail);
    auto& [line, record] = judgement.report;
    judgement.call = row.call;
    judgement.object = decoded.object;
    const std::string values = line_of(decoded.values);
    line =
        fmt::format("{} {}  {}{}{}", label_of(message), row.call, decoded.object, values.empty() ? "" : ": ", values);
    judgement.outcome_at = line.size();
    if (detail == Detail::recorded) {
        record["call"] = row.call;
        record["object"] = decoded.object;
        record["values"] = json_of(decoded.values);
    }

    if (row.query != nullptr) {
        const Answer answer = row.query(decoded, state_, measurements_);
        judgement.answer = answer.bytes;
        judgement.comes_to(line_of(answer.values));
        if (detail == Detail::recorded) {
            record["answer"] = json_of(answer.values);
        }
        return judgement;
    }
    if (!state_.has_room(decoded)) {
        return refuse(message, {no_room, "nothing more can be kept (vorsim reset makes room)"}, detail);
    }
    judgement.told = std::move(decoded);
    if (!row.exchange.answered) {
        judgement.comes_to("no answer awaited");
        record["status"] = nullptr;
        return judgement;
    }
    const std::int32_t status = row.exchange.accepted;
    judgement.answer_id = row.exchange.answer_id;
    judgement.answer = status_answer(status);
    judgement.comes_to(fmt::format("status {}", status));
    record["status"] = status;
    return judgement;
}

void Gateway::settle(const Judgement& judgement)
{
    if (judgement.told) {
        state_.keep(*judgement.told);
    }
}

Judgement Gateway::judge(const Message& message, Detail detail)
{
    ++messages_;
    const auto matched = match(message);
    const auto* const complaint = std::get_if<Complaint>(&matched);
    return complaint != nullptr ? refuse(message, *complaint, detail)
                                : accept(message, decode(message.sap, std::get<Match>(matched), show_secrets_), detail);
}

} // namespace vorsim
