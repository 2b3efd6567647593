#include "gateway/match.hpp"

#include <algorithm>

#include <fmt/core.h>

#include "tables/managers.hpp"
#include "text/text.hpp"

namespace vorsim::gateway {
namespace {

std::string unknown(const Message& message)
{
    for (const tables::Manager& other : tables::managers) {
        if (other.sap != message.sap && !tables::rows_of(message.id, other.sap).empty()) {
            return fmt::format("unknown message id; it belongs to {}", other.name);
        }
    }
    return "unknown message id";
}

// What is wrong with the number of repeated elements; empty when it is right.
std::string wrong_count(const tables::MessageRow& row, const std::vector<Part>& parts)
{
    const auto fields = row.layout.fields();
    if (fields.empty() || fields.back().counted_by.empty()) {
        return {};
    }
    const tables::Field& list = fields.back();
    const auto named = [](const Part& part) { return part.field->name; };
    const auto present = std::ranges::count(parts, list.name, named);
    const std::int32_t announced = std::ranges::find(parts, list.counted_by, named)->number;
    if (announced == present) {
        return {};
    }
    return fmt::format("{} is {}, but {} has {}", list.counted_by, announced, list.name,
                       vor::counted(static_cast<std::uint64_t>(present), "element"));
}

} // namespace

std::variant<Match, Mismatch> match(const Message& message)
{
    const std::vector<const tables::MessageRow*> rows = tables::rows_of(message.id, message.sap);
    if (rows.empty()) {
        return Mismatch{unknown_message, unknown(message)};
    }

    const tables::Layout& layout = rows.front()->layout; // the rows of one message share its form
    const std::size_t meta_size = layout.form == tables::Form::option_byte ? 1 : 0;
    if (message.meta_data.size() != meta_size) {
        return Mismatch{wrong_elements,
                        fmt::format("meta-data has {} bytes, expected {}", message.meta_data.size(), meta_size)};
    }
    Bytes payload = message.payload;
    Bytes lead = message.meta_data;
    if (layout.form == tables::Form::flag_byte) {
        if (payload.empty()) {
            return Mismatch{wrong_elements, fmt::format("payload is empty, expected the byte {} first", layout.lead)};
        }
        lead = payload.first(1);
        payload = payload.subspan(1);
    }

    Fitting fitting = fit(rows, payload);
    if (fitting.row == nullptr) {
        return Mismatch{wrong_elements, fitting.wrong};
    }
    const tables::MessageRow& row = *fitting.row;
    if (row.exchange.answered != message.answer_wanted) {
        return Mismatch{wrong_manner, message.answer_wanted
                                          ? fmt::format("{} is one-way, but an answer is awaited", row.call)
                                          : fmt::format("{} is a request, but was sent one-way", row.call)};
    }
    if (const std::string wrong = wrong_count(row, fitting.parts); !wrong.empty()) {
        return Mismatch{wrong_elements, wrong};
    }
    Match match{.row = &row, .parts = std::move(fitting.parts)};
    if (!lead.empty()) {
        match.lead = lead[0];
    }
    return match;
}

} // namespace vorsim::gateway
