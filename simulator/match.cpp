#include "match.hpp"

#include <algorithm>
#include <cstring>

#include <vorinfra_manager.h>

namespace vorsim {
namespace {

using Element = VORINFRA_ELEMENT;

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

/* "a or b", each once. */
class Alternatives {
public:
    void add(const std::string& alternative)
    {
        if (std::ranges::find(all_, alternative) == all_.end()) {
            all_.push_back(alternative);
        }
    }
    bool empty() const { return all_.empty(); }
    std::string text() const
    {
        std::string text;
        for (const std::string& alternative : all_) {
            text += (text.empty() ? "" : " or ") + alternative;
        }
        return text;
    }

private:
    std::vector<std::string> all_;
};

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

Match compare(const Call& row, const std::vector<Element>& elements)
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
        furthest = std::max(furthest, compare(*row, elements).fitting);
    }
    const std::string place = "element " + std::to_string(furthest + 1);
    const Element* const found = furthest < elements.size() ? &elements[furthest] : nullptr;
    Alternatives expected;
    for (const Call* row : rows) {
        const Match stopped = compare(*row, elements);
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
        expected.add(expectation(wanted));
    }
    if (found == nullptr) {
        return (furthest == 0 ? "carries no element" : "ends after element " + std::to_string(furthest)) +
               ", expected " + expected.text();
    }
    const std::string tag = "tag " + std::to_string(found->tag) + " " + kind_name(*found);
    return expected.empty() ? place + " (" + tag + ") is one too many"
                            : place + " is " + tag + ", expected " + expected.text();
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
    const auto row = std::ranges::find_if(rows, [&](const Call* call) { return compare(*call, elements).whole; });
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

const Call* find_record(const std::vector<const Call*>& rows, Bytes payload, std::vector<Part>& parts,
                        std::string& complaint)
{
    const std::uint16_t length = rows.front()->payload.length;
    if (payload.size() != length) {
        complaint = "payload has " + std::to_string(payload.size()) + " bytes, expected " + std::to_string(length);
        return nullptr;
    }
    Alternatives expected;
    for (const Call* row : rows) {
        parts.clear();
        bool applies = true;
        for (const Field& field : row->payload.fields()) {
            const Bytes bytes = payload.subspan(field.place, field.size());
            const Part part{&field, bytes, number_in(field, bytes)};
            parts.push_back(part);
            if (field.only_value && part.number != *field.only_value) {
                applies = false;
                expected.add(std::to_string(*field.only_value));
                complaint =
                    std::string(field.name) + " is " + std::to_string(part.number) + ", expected " + expected.text();
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

} // namespace

std::string_view text_in(const Part& part)
{
    const std::string_view text(reinterpret_cast<const char*>(part.bytes.data()), part.bytes.size());
    return text.substr(0, text.find('\0'));
}

const Call* match(const std::vector<const Call*>& rows, Bytes payload, std::vector<Part>& parts, std::string& complaint)
{
    return rows.front()->payload.form == Form::record ? find_record(rows, payload, parts, complaint)
                                                      : find_chain(rows, payload, parts, complaint);
}

} // namespace vorsim
