#include "decode.hpp"

#include <algorithm>
#include <cstring>

#include <vorinfra_manager.h>

#include "text.hpp"

namespace vorsim {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Element = VORINFRA_ELEMENT;

/* One field and what the message holds for it. */
struct Part {
    const Field* field;
    Bytes bytes;
    std::int32_t number;
};

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

std::int32_t number_in(const Field& field, Bytes bytes)
{
    std::int32_t wide = 0;
    std::int16_t narrow = 0;
    switch (field.kind) {
    case Kind::byte:
        return bytes[0];
    case Kind::int16:
        std::memcpy(&narrow, bytes.data(), sizeof narrow);
        return narrow;
    case Kind::int32:
        std::memcpy(&wide, bytes.data(), sizeof wide);
        return wide;
    default:
        return 0;
    }
}

std::string_view text_in(const Part& part)
{
    const std::string_view text(reinterpret_cast<const char*>(part.bytes.data()), part.bytes.size());
    return text.substr(0, text.find('\0'));
}

/* ---- Complaints in words ------------------------------------------------ */

constexpr std::string_view kind_name(Kind kind)
{
    constexpr std::string_view names[] = {"one raw byte", "int16", "int32", "string"};
    return names[static_cast<std::size_t>(kind)];
}

std::string kind_name(const Element& element)
{
    switch (element.kind) {
    case VORINFRA_INT16:
        return "int16";
    case VORINFRA_INT32:
        return "int32";
    case VORINFRA_STRING:
        return "string";
    default:
        return std::to_string(element.size) + " raw bytes";
    }
}

bool same_kind(const Element& element, const Field& field)
{
    switch (field.kind) {
    case Kind::byte:
        return element.kind == VORINFRA_RAW && element.size == 1;
    case Kind::int16:
        return element.kind == VORINFRA_INT16;
    case Kind::int32:
        return element.kind == VORINFRA_INT32;
    default:
        return element.kind == VORINFRA_STRING;
    }
}

std::string expectation(const Field& field)
{
    return "tag " + std::to_string(field.place) + " " + std::string(kind_name(field.kind)) + " (" +
           std::string(field.name) + ")";
}

/* Adds an alternative to a list in words, once. */
void add_alternative(std::string& list, const std::string& alternative)
{
    if (list.find(alternative) == std::string::npos) {
        list += (list.empty() ? "" : " or ") + alternative;
    }
}

/* ---- Chains against rows ------------------------------------------------ */

struct Match {
    std::size_t fitting = 0; // elements that fit, from the first on
    bool whole = false;
    const Field* wanted = nullptr; // what the row has where it stopped; null: nothing more
};

bool fits(const Element& element, const Field& field)
{
    return element.tag == field.place && same_kind(element, field) &&
           (!field.only_value || element.number == *field.only_value);
}

Match match(const Call& row, const std::vector<Element>& elements)
{
    const auto fields = row.payload.fields();
    Match result;
    std::size_t at = 0;
    for (const Element& element : elements) {
        if (at < fields.size() && fits(element, fields[at])) {
            at += fields[at].repeated ? 0 : 1;
            ++result.fitting;
            continue;
        }
        result.wanted = at < fields.size() ? &fields[at] : nullptr;
        return result;
    }
    result.whole = at == fields.size() || fields[at].repeated;
    result.wanted = result.whole ? nullptr : &fields[at];
    return result;
}

/* Says what stands where the rows that fit furthest stop. */
std::string mismatch(const std::vector<const Call*>& rows, const std::vector<Element>& elements)
{
    std::size_t furthest = 0;
    for (const Call* row : rows) {
        furthest = std::max(furthest, match(*row, elements).fitting);
    }
    const std::string place = "element " + std::to_string(furthest + 1);
    const Element* const found = furthest < elements.size() ? &elements[furthest] : nullptr;
    std::string expected;
    for (const Call* row : rows) {
        const Match stopped = match(*row, elements);
        if (stopped.fitting != furthest || stopped.wanted == nullptr) {
            continue;
        }
        const Field& wanted = *stopped.wanted;
        if (found != nullptr && found->tag == wanted.place) {
            const std::string named =
                place + " (" + std::string(wanted.name) + ", tag " + std::to_string(found->tag) + ")";
            if (!same_kind(*found, wanted)) {
                return named + " is " + kind_name(*found) + ", expected " + std::string(kind_name(wanted.kind));
            }
            return named + " is " + std::to_string(found->number) + ", expected " + std::to_string(*wanted.only_value);
        }
        add_alternative(expected, expectation(wanted));
    }
    if (found == nullptr) {
        return (furthest == 0 ? "carries no element" : "ends after element " + std::to_string(furthest)) +
               ", expected " + expected;
    }
    const std::string tag = "tag " + std::to_string(found->tag) + " " + kind_name(*found);
    return expected.empty() ? place + " (" + tag + ") is one too many"
                            : place + " is " + tag + ", expected " + expected;
}

/* The parts of the row that the chain fits; empty with a complaint when none does. */
const Call* find_chain(const std::vector<const Call*>& rows, Bytes payload, std::vector<Part>& parts,
                       std::string& complaint)
{
    std::vector<Element> elements;
    std::uint16_t cursor = 0;
    for (;;) {
        Element element{};
        const int read =
            vorinfra_next_element(payload.data(), static_cast<std::uint16_t>(payload.size()), &cursor, &element);
        if (read < 0) {
            complaint = "payload is no chain behind element " + std::to_string(elements.size());
            return nullptr;
        }
        if (read == 0) {
            break;
        }
        elements.push_back(element);
    }
    const auto row = std::ranges::find_if(rows, [&](const Call* call) { return match(*call, elements).whole; });
    if (row == rows.end()) {
        complaint = mismatch(rows, elements);
        return nullptr;
    }
    const auto fields = (*row)->payload.fields();
    for (std::size_t at = 0; at < elements.size(); ++at) {
        const Field& field = fields[std::min(at, fields.size() - 1)];
        const Bytes bytes(elements[at].value, elements[at].size);
        parts.push_back({&field, bytes, field.kind == Kind::byte ? bytes[0] : elements[at].number});
    }
    return *row;
}

/* ---- Records ------------------------------------------------------------ */

const Call* find_record(const std::vector<const Call*>& rows, Bytes payload, std::vector<Part>& parts,
                        std::string& complaint)
{
    const std::uint16_t length = rows.front()->payload.length;
    if (payload.size() != length) {
        complaint = "payload has " + std::to_string(payload.size()) + " bytes, expected " + std::to_string(length);
        return nullptr;
    }
    std::string expected;
    for (const Call* row : rows) {
        parts.clear();
        bool applies = true;
        for (const Field& field : row->payload.fields()) {
            const Bytes bytes = payload.subspan(field.place, field.size());
            const Part part{&field, bytes, number_in(field, bytes)};
            parts.push_back(part);
            if (field.only_value && part.number != *field.only_value) {
                applies = false;
                add_alternative(expected, std::to_string(*field.only_value));
                complaint = std::string(field.name) + " is " + std::to_string(part.number) + ", expected " + expected;
            }
        }
        if (applies) {
            for (const Part& part : parts) {
                if (part.field->kind == Kind::text && text_in(part).size() == part.field->length) {
                    complaint = std::string(part.field->name) + " does not end within its " +
                                std::to_string(part.field->length) + " bytes";
                    return nullptr;
                }
            }
            return row;
        }
    }
    return nullptr;
}

/* ---- Values ------------------------------------------------------------- */

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
    const Call* const call = form.form == Form::record ? find_record(rows, payload, parts, complaint)
                                                       : find_chain(rows, payload, parts, complaint);
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
