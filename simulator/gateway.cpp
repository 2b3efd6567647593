#include "gateway.hpp"

#include "text.hpp"

namespace vorsim {

Outcome Gateway::begin(const Incoming& message) const
{
    Outcome outcome;
    outcome.answered = message.answer_wanted;
    outcome.answer_id = message.id;
    outcome.line = manager_label(message.sap) + " " + hex(message.id);
    outcome.record = {{"sap", message.sap}, {"source", message.source}, {"id", hex(message.id)}};
    return outcome;
}

Outcome Gateway::complain(const Incoming& message, const Complaint& complaint)
{
    ++complaints_;
    Outcome outcome = begin(message);
    outcome.answer = Reply(4).put(0, "status", static_cast<std::int32_t>(complaint.status)).bytes;
    outcome.line = "strict: " + outcome.line + ": " + complaint.what;
    if (message.answer_wanted) {
        outcome.line += " -> status " + std::to_string(complaint.status);
    }
    outcome.record["complaint"] = complaint.what;
    outcome.record["status"] = complaint.status;
    return outcome;
}

Outcome Gateway::accept(const Incoming& message, const Told& told)
{
    const Call& call = *told.call;
    Outcome outcome = begin(message);
    const std::string values = line_of(told.values);
    outcome.line += " " + std::string(call.name) + "  " + told.object + (values.empty() ? "" : ": ") + values;
    outcome.record["call"] = call.name;
    outcome.record["object"] = told.object;
    outcome.record["values"] = json_of(told.values);

    if (call.query != nullptr) {
        const Reply reply = call.query(told, state_, readings_);
        outcome.answer = reply.bytes;
        outcome.line += " -> " + line_of(reply.values);
        outcome.record["answer"] = json_of(reply.values);
        return outcome;
    }
    state_.keep(message.sap, told);
    if (!call.message.answered) {
        outcome.line += " -> no answer awaited";
        outcome.record["status"] = nullptr;
        return outcome;
    }
    const std::int32_t status = call.message.accepted;
    outcome.answer_id = call.message.answer_id;
    outcome.answer = Reply(4).put(0, "status", status).bytes;
    outcome.line += " -> status " + std::to_string(status);
    outcome.record["status"] = status;
    return outcome;
}

Outcome Gateway::handle(const Incoming& message)
{
    ++messages_;
    const auto judged = decode(message, show_secrets_);
    const auto* const told = std::get_if<Told>(&judged);
    return told != nullptr ? accept(message, *told) : complain(message, std::get<Complaint>(judged));
}

} // namespace vorsim
