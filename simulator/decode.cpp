#include "decode.hpp"

#include <algorithm>

#include "match.hpp"
#include "text.hpp"

namespace vorsim {
namespace {

std::vector<const Call*> rows_for(std::int32_t sap, std::uint32_t id)
{
    std::vector<const Call*> rows;
    for (const Family* family : families()) {
        for (const Call& call : family->calls) {
            if (call.message.id == id && (call.message.sap == sap || call.message.sap == any_sap)) {
                rows.push_back(&call);
            }
        }
    }
    return rows;
}

Value value_of(const Part& part, bool show_secrets)
{
    const Field& field = *part.field;
    if (field.kind == Kind::text) {
        const std::string_view text = text_in(part);
        if (field.look == Look::secret && !show_secrets) {
            return {field.name, std::string(masked), masked};
        }
        return {field.name, quoted(text), text};
    }
    const std::int32_t number = part.number;
    if (field.look == Look::address) {
        const std::string address = dotted(static_cast<std::uint32_t>(number));
        return {field.name, address, address};
    }
    const std::int64_t shown = field.look == Look::number  ? number
                               : field.kind == Kind::int32 ? static_cast<std::uint32_t>(number)
                                                           : static_cast<std::uint16_t>(number);
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
    values.back().shown += (values.back().shown.empty() ? "" : ",") + value.shown;
    values.back().data.push_back(std::move(value.data));
}

/* The object's text with the values in place of their names. */
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
        const std::string text = value->data.is_string() ? escaped(value->data.get<std::string>()) : value->shown;
        object += text.empty() ? "\"\"" : text;
        pattern.remove_prefix(close + 1);
    }
    return object;
}

std::string count_complaint(const Told& told)
{
    const auto fields = told.call->payload.fields();
    if (fields.empty() || fields.back().counted_by.empty()) {
        return {};
    }
    const auto list = std::ranges::find(told.values, fields.back().name, &Value::name);
    const std::size_t present = list == told.values.end() ? 0 : list->data.size();
    const std::int32_t announced = told.number(fields.back().counted_by);
    if (announced >= 0 && static_cast<std::size_t>(announced) == present) {
        return {};
    }
    return std::string(fields.back().counted_by) + " is " + std::to_string(announced) + ", but " +
           std::to_string(present) + " of " + std::string(fields.back().name) + " follow";
}

std::string unknown(const Incoming& message)
{
    for (const Manager& other : managers()) {
        if (other.sap != message.sap && !rows_for(other.sap, message.id).empty()) {
            return "no such message here (it is one of " + manager_label(other.sap) + ")";
        }
    }
    return "no such message";
}

} // namespace

std::variant<Told, Complaint> decode(const Incoming& message, bool show_secrets)
{
    const std::vector<const Call*> rows = rows_for(message.sap, message.id);
    if (rows.empty()) {
        return Complaint{unknown_message, unknown(message)};
    }

    const Payload& form = rows.front()->payload; // the rows of one message share it
    const std::size_t meta_size = form.form == Form::option_lead ? 1 : 0;
    if (message.meta_data.size() != meta_size) {
        return Complaint{wrong_elements, "meta-data has " + std::to_string(message.meta_data.size()) +
                                             " bytes, expected " + std::to_string(meta_size)};
    }
    Bytes payload = message.payload;
    Bytes lead = message.meta_data;
    if (form.form == Form::flag_lead) {
        if (payload.empty()) {
            return Complaint{wrong_elements, "payload is empty, expected the byte " + std::string(form.lead)};
        }
        lead = payload.first(1);
        payload = payload.subspan(1);
    }

    std::vector<Part> parts;
    std::string complaint;
    const Call* const call = match(rows, payload, parts, complaint);
    if (call == nullptr) {
        return Complaint{wrong_elements, complaint};
    }
    if (call->message.answered != message.answer_wanted) {
        return Complaint{wrong_manner, std::string(call->name) + (message.answer_wanted
                                                                      ? " waits for an answer to a one-way message"
                                                                      : " was sent one-way, but is to be answered")};
    }

    Told told{.call = call};
    if (!lead.empty()) {
        told.values.push_back({form.lead, std::to_string(lead[0]), lead[0]});
    }
    for (const Part& part : parts) {
        add_value(told.values, *part.field, value_of(part, show_secrets));
    }
    complaint = count_complaint(told);
    if (!complaint.empty()) {
        return Complaint{wrong_elements, complaint};
    }
    told.object = object_of(call->object, told.values);
    return told;
}

} // namespace vorsim
