#include "gateway/gateway.hpp"

#include <fmt/format.h>

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
    return {
        .answered = message.answer_wanted,
        .answer_id = message.id,
        .answer = {},
        .report = {{}, {{"sap", message.sap}, {"source", message.source}, {"id", fmt::format("{:#x}", message.id)}}}};
}

std::vector<std::uint8_t> status_answer(std::int32_t status)
{
    return Answer(4).put(0, "status", status).bytes;
}

} // namespace

Judgement Gateway::refuse(const Message& message, const Complaint& complaint)
{
    ++complaints_;
    const auto status = static_cast<std::int32_t>(complaint.status);
    Judgement judgement = begin(message);
    judgement.answer = status_answer(status);
    judgement.report.line = fmt::format("strict: {}: {}", label_of(message), complaint.text);
    if (message.answer_wanted) {
        judgement.report.line += fmt::format(" -> status {}", status);
    }
    judgement.report.record["complaint"] = complaint.text;
    judgement.report.record["status"] = status;
    return judgement;
}

Judgement Gateway::accept(const Message& message, const Decoded& decoded)
{
    const Row& row = *decoded.row;
    Judgement judgement = begin(message);
    auto& [line, record] = judgement.report;
    const std::string values = line_of(decoded.values);
    line = fmt::format("{} {}  {}{}{} -> ", label_of(message), row.call, decoded.object, values.empty() ? "" : ": ",
                       values);
    record["call"] = row.call;
    record["object"] = decoded.object;
    record["values"] = json_of(decoded.values);

    if (row.query != nullptr) {
        const Answer answer = row.query(decoded, state_, measurements_);
        judgement.answer = answer.bytes;
        line += line_of(answer.values);
        record["answer"] = json_of(answer.values);
        return judgement;
    }
    if (!state_.keep(decoded)) {
        return refuse(message, {no_room, "nothing more can be kept (vorsim reset makes room)"});
    }
    if (!row.exchange.answered) {
        line += "no answer awaited";
        record["status"] = nullptr;
        return judgement;
    }
    const std::int32_t status = row.exchange.accepted;
    judgement.answer_id = row.exchange.answer_id;
    judgement.answer = status_answer(status);
    line += fmt::format("status {}", status);
    record["status"] = status;
    return judgement;
}

Judgement Gateway::judge(const Message& message)
{
    ++messages_;
    const auto decoded = decode(message, show_secrets_);
    const auto* const complaint = std::get_if<Complaint>(&decoded);
    return complaint != nullptr ? refuse(message, *complaint) : accept(message, std::get<Decoded>(decoded));
}

} // namespace vorsim
