#include "faults/faults.hpp"

#include <algorithm>

#include <fmt/core.h>

namespace vorsim::faults {
namespace {

void note(values::Record& record, const DueRule& due)
{
    record.notes.push_back(due.text());
    record.fault = {due.number, due.rule.text};
}

Delivery::Way way_of(Action::Kind kind)
{
    switch (kind) {
    case Action::Kind::doubled:
        return Delivery::Way::twice;
    case Action::Kind::swapped:
        return Delivery::Way::after_the_next;
    case Action::Kind::never:
        return Delivery::Way::never;
    case Action::Kind::refuse:
        return Delivery::Way::refused;
    case Action::Kind::die:
        return Delivery::Way::dying;
    default:
        return Delivery::Way::once;
    }
}

} // namespace

Delivery apply(gateway::Decision& decision, const DueRule& due)
{
    using Kind = Action::Kind;
    constexpr std::uint32_t low_half = 0x1;
    constexpr std::uint32_t high_half = 0x10000;

    const Action& action = due.rule.action;
    values::Record& record = decision.record;
    switch (action.kind) {
    case Kind::status: {
        const auto status = static_cast<std::int32_t>(action.number);
        decision.answer = gateway::status_answer(status);
        if (record.status != status) {
            decision.row_to_keep = nullptr; // a refused setting is not stored
        }
        record.answer_values.clear();
        record.status = status;
        break;
    }
    case Kind::id_low:
        decision.answer_id ^= low_half;
        break;
    case Kind::id_high:
        decision.answer_id ^= high_half;
        break;
    case Kind::id:
        decision.answer_id = static_cast<std::uint32_t>(action.number);
        break;
    case Kind::no_payload:
        decision.answer.clear();
        break;
    case Kind::short_payload:
        decision.answer.resize(std::min(decision.answer.size(), static_cast<std::size_t>(action.number)));
        break;
    case Kind::refuse:
        decision.row_to_keep = nullptr;
        break;
    default:
        break;
    }
    note(record, due);
    return {way_of(action.kind), action.time};
}

ReplyFault apply(konfd::Reply& reply, const DueRule& due)
{
    note(reply.record, due);
    switch (due.rule.action.kind) {
    case Action::Kind::answer:
        reply.answer = fmt::format("{}\n", due.rule.action.text);
        reply.record.answer = due.rule.action.text;
        return ReplyFault::whole;
    case Action::Kind::split:
        return ReplyFault::split;
    case Action::Kind::never:
        return ReplyFault::never;
    case Action::Kind::hang_up:
        return ReplyFault::hung_up;
    default:
        return ReplyFault::whole;
    }
}

} // namespace vorsim::faults
