#include "gateway/gateway.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include <fmt/core.h>

#include "text/text.hpp"

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

// What is wrong with a real manager's answer; empty when nothing is.
std::string wrong_with(const Decision& expected, std::uint32_t id, std::size_t size)
{
    if (id != expected.answer_id) {
        return fmt::format("answer has id {:#x}, expected {:#x}", id, expected.answer_id);
    }
    return size == expected.answer.size()
               ? ""
               : fmt::format("answer has {}, expected {}", vor::counted(size, "byte"), expected.answer.size());
}

// An answer that is neither a status nor the record expected.
values::Value as_bytes(Bytes bytes)
{
    constexpr std::size_t most_shown = 24;
    std::string text;
    for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), most_shown))) {
        text += fmt::format("{:02x}", byte);
    }
    text += bytes.size() > most_shown ? "..." : "";
    return {"answer", text, text};
}

} // namespace

std::vector<std::uint8_t> status_answer(std::int32_t status)
{
    return Answer(status_size).put(0, "status", status).bytes;
}

std::size_t answer_size(const tables::MessageRow& row)
{
    Measurements any(0);
    return row.query != nullptr    ? row.query({.row = &row}, State(), any).bytes.size()
           : row.exchange.answered ? status_size
                                   : 0;
}

Decision Gateway::accept(const Message& message, Decoded decoded)
{
    const tables::MessageRow& row = *decoded.row;
    if (row.query == nullptr && !passed_on_.contains(message.sap) && !state_.has_room(decoded)) {
        return refuse(message, {no_space, "no room for more settings; vorsim reset clears them"});
    }
    Decision decision = begin(message);
    values::Record& record = decision.record;
    if (row.query != nullptr) {
        Answer answer = row.query(decoded, state_, measurements_);
        decision.answer = std::move(answer.bytes);
        record.answer_values = std::move(answer.values);
        decision.places = std::move(answer.places);
    } else if (row.exchange.answered) {
        decision.row_to_keep = &row;
        decision.answer_id = row.exchange.answer_id;
        decision.accepted = row.exchange.accepted;
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

void Decision::withdraw()
{
    row_to_keep = nullptr;
    answer.clear();
    record.status.reset();
    record.answer_values.clear();
}

void Gateway::take_answer(Decision& decision, std::uint32_t id, Bytes bytes)
{
    values::Record& record = decision.record;
    const std::string wrong = record.complained ? "" : wrong_with(decision, id, bytes.size());
    if (!wrong.empty()) {
        record.complained = true;
        record.complaint = wrong;
    }
    const bool as_expected = bytes.size() == decision.answer.size();
    std::vector<values::Value> values = std::move(record.answer_values);
    const tables::MessageRow* const row = decision.row_to_keep;
    decision.withdraw();
    decision.answer_id = id;
    decision.answer.assign(bytes.begin(), bytes.end());
    if (as_expected && !values.empty()) {
        for (std::size_t at = 0; at < values.size(); ++at) {
            decision.places[at].read(values[at], bytes.data() + decision.places[at].offset);
        }
        record.answer_values = std::move(values);
    } else if (std::int32_t status = 0; bytes.size() == sizeof status) {
        std::memcpy(&status, bytes.data(), sizeof status);
        record.status = status;
        decision.row_to_keep = !record.complained && record.status == decision.accepted ? row : nullptr;
    } else if (!bytes.empty()) {
        record.answer_values.push_back(as_bytes(bytes));
    }
}

bool Gateway::store(const Decision& decision)
{
    const values::Record& record = decision.record;
    return decision.row_to_keep == nullptr ||
           state_.keep(
               {.sap = record.sap, .row = decision.row_to_keep, .object = record.object, .values = record.values});
}

Decision Gateway::judge(const Message& message)
{
    const auto matched = match(message);
    const auto* const complaint = std::get_if<Mismatch>(&matched);
    return complaint != nullptr ? refuse(message, *complaint)
                                : accept(message, decode(message.sap, std::get<Match>(matched), show_secrets_));
}

} // namespace vorsim::gateway
