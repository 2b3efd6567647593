#include "gateway/decode.hpp"

#include <algorithm>

#include <fmt/format.h>

#include "gateway/match.hpp"
#include "tables/families.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

std::vector<const Row*> rows_for(std::int32_t sap, std::uint32_t id)
{
    std::vector<const Row*> rows;
    for (const Family* family : all_families()) {
        for (const Row& row : family->rows()) {
            if (row.exchange.id == id && family->serves(row, sap)) {
                rows.push_back(&row);
            }
        }
    }
    return rows;
}

// Each branch widens from its own width: a common type of them all would lose the sign.
std::int64_t number_shown(const Field& field, std::int32_t number)
{
    if (field.display == Display::signed_number) {
        return number;
    }
    return field.kind == Kind::int32 ? std::int64_t{static_cast<std::uint32_t>(number)}
                                     : std::int64_t{static_cast<std::uint16_t>(number)};
}

Value value_of(const Part& part, bool show_secrets)
{
    const Field& field = *part.field;
    if (field.kind == Kind::text) {
        const std::string_view text = text_in(part);
        if (field.display == Display::secret && !show_secrets) {
            return {field.name, std::string(vor::mask), vor::mask};
        }
        return {field.name, vor::quoted(text, longest_in_line), text};
    }
    const std::int32_t number = part.number;
    if (field.display == Display::address) {
        const std::string address = vor::dotted(static_cast<std::uint32_t>(number));
        return {field.name, address, address};
    }
    const std::int64_t shown = number_shown(field, number);
    return {field.name, std::to_string(shown), shown};
}

void add_value(std::vector<Value>& values, const Field& field, Value value)
{
    if (!field.repeated) {
        values.push_back(std::move(value));
        return;
    }
    if (values.empty() || values.back().name != field.name) {
        values.push_back({field.name, "", Json::array()});
    }
    values.back().text += (values.back().text.empty() ? "" : ",") + value.text;
    values.back().data.push_back(std::move(value.data));
}

// The object's text with the values in place of their names.
std::string object_of(std::string_view pattern, std::vector<Value>& values)
{
    std::string object;
    while (!pattern.empty()) {
        const std::size_t open = std::min(pattern.find('{'), pattern.size());
        object += pattern.substr(0, open);
        if (open == pattern.size()) {
            break;
        }
        const std::size_t close = pattern.find('}', open);
        const auto value = std::ranges::find(values, pattern.substr(open + 1, close - open - 1), &Value::name);
        value->in_object = true;
        const std::string text = value->data.is_string() ? vor::escaped(value->data.get<std::string>()) : value->text;
        object += text.empty() ? "\"\"" : text;
        pattern.remove_prefix(close + 1);
    }
    return object;
}

// What is wrong with the number of repeated elements; empty when nothing is.
std::string wrong_count(const Decoded& decoded)
{
    const auto fields = decoded.row->layout.fields();
    if (fields.empty() || fields.back().counted_by.empty()) {
        return {};
    }
    const Field& list = fields.back();
    const auto found = std::ranges::find(decoded.values, list.name, &Value::name);
    const std::size_t present = found == decoded.values.end() ? 0 : found->data.size();
    const std::int32_t announced = decoded.number(list.counted_by);
    if (announced >= 0 && static_cast<std::size_t>(announced) == present) {
        return {};
    }
    return fmt::format("{} is {}, but {} of {} follow", list.counted_by, announced, present, list.name);
}

std::string unknown(const Message& message)
{
    for (const Manager& other : managers) {
        if (other.sap != message.sap && !rows_for(other.sap, message.id).empty()) {
            return fmt::format("no such message here (it is one of {})", manager_label(other.sap));
        }
    }
    return "no such message";
}

} // namespace

std::variant<Decoded, Complaint> decode(const Message& message, bool show_secrets)
{
    const std::vector<const Row*> rows = rows_for(message.sap, message.id);
    if (rows.empty()) {
        return Complaint{unknown_message, unknown(message)};
    }

    const Layout& layout = rows.front()->layout; // the rows of one message share its form
    const std::size_t meta_size = layout.form == Form::option_byte ? 1 : 0;
    if (message.meta_data.size() != meta_size) {
        return Complaint{wrong_elements,
                         fmt::format("meta-data has {} bytes, expected {}", message.meta_data.size(), meta_size)};
    }
    Bytes payload = message.payload;
    Bytes lead = message.meta_data;
    if (layout.form == Form::flag_byte) {
        if (payload.empty()) {
            return Complaint{wrong_elements, fmt::format("payload is empty, expected the byte {}", layout.lead)};
        }
        lead = payload.first(1);
        payload = payload.subspan(1);
    }

    const auto [row, parts, mismatch] = match(rows, payload);
    if (row == nullptr) {
        return Complaint{wrong_elements, mismatch};
    }
    if (row->exchange.answered != message.answer_wanted) {
        return Complaint{wrong_manner, message.answer_wanted
                                           ? fmt::format("{} waits for an answer to a one-way message", row->call)
                                           : fmt::format("{} was sent one-way, but is to be answered", row->call)};
    }

    Decoded decoded{.sap = message.sap, .row = row};
    if (!lead.empty()) {
        decoded.values.push_back({layout.lead, std::to_string(lead[0]), lead[0]});
    }
    for (const Part& part : parts) {
        add_value(decoded.values, *part.field, value_of(part, show_secrets));
    }
    if (const std::string wrong = wrong_count(decoded); !wrong.empty()) {
        return Complaint{wrong_elements, wrong};
    }
    decoded.object = object_of(row->object, decoded.values);
    return decoded;
}

} // namespace vorsim
