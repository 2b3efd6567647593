#include "gateway/fit.hpp"

#include <algorithm>
#include <cstring>
#include <optional>

#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "text/text.hpp"

namespace vorsim::gateway {
namespace {

using Element = VORINFRA_ELEMENT;
using MessageRows = std::vector<const tables::MessageRow*>;

// ---- Kinds in words ---------------------------------------------------------

// None for raw bytes other than one.
std::optional<tables::Kind> kind_of(const Element& element)
{
    switch (element.kind) {
    case VORINFRA_INT16:
        return tables::Kind::int16;
    case VORINFRA_INT32:
        return tables::Kind::int32;
    case VORINFRA_STRING:
        return tables::Kind::text;
    default:
        return element.size == 1 ? std::optional(tables::Kind::byte) : std::nullopt;
    }
}

constexpr std::string_view kind_name(tables::Kind kind)
{
    constexpr std::string_view names[] = {"one raw byte", "int16", "int32", "string"};
    return names[static_cast<std::size_t>(kind)];
}

std::string kind_name(const Element& element)
{
    const auto kind = kind_of(element);
    return kind && kind != tables::Kind::byte ? std::string(kind_name(*kind))
                                              : fmt::format("{} raw bytes", element.size);
}

// Each once.
void add_alternative(std::vector<std::string>& all, const std::string& one)
{
    if (std::ranges::find(all, one) == all.end()) {
        all.push_back(one);
    }
}

// ---- Chains against rows ----------------------------------------------------

// How far a chain fits a row.
struct Reach {
    std::size_t elements;      // that fit, from the first on
    const tables::Field* next; // the row's next field; null: the row is complete
};

bool fits(const Element& element, const tables::Field& field)
{
    return element.tag == field.tag_or_offset && kind_of(element) == field.kind &&
           (!field.only_value || element.number == *field.only_value);
}

Reach compare(const tables::MessageRow& row, const std::vector<Element>& elements)
{
    const auto fields = row.layout.fields();
    std::size_t at = 0;
    std::size_t fitting = 0;
    while (fitting < elements.size() && at < fields.size() && fits(elements[fitting], fields[at])) {
        at += fields[at].repeated ? 0 : 1;
        ++fitting;
    }
    const bool over = at == fields.size() || (fields[at].repeated && fitting == elements.size());
    return {fitting, over ? nullptr : &fields[at]};
}

// Describes the first element that none of the rows that fit furthest has.
std::string mismatch(const MessageRows& rows, const std::vector<Element>& elements)
{
    std::size_t furthest = 0;
    for (const tables::MessageRow* row : rows) {
        furthest = std::max(furthest, compare(*row, elements).elements);
    }
    const std::size_t number = furthest + 1;
    const Element* const found = furthest < elements.size() ? &elements[furthest] : nullptr;
    std::vector<std::string> expected;
    for (const tables::MessageRow* row : rows) {
        const Reach reach = compare(*row, elements);
        if (reach.elements != furthest || reach.next == nullptr) {
            continue;
        }
        const tables::Field& next = *reach.next;
        if (found == nullptr || found->tag != next.tag_or_offset) {
            add_alternative(expected,
                            fmt::format("tag {} {} ({})", next.tag_or_offset, kind_name(next.kind), next.name));
        } else if (kind_of(*found) != next.kind) {
            return fmt::format("element {} ({}, tag {}) is {}, expected {}", number, next.name, found->tag,
                               kind_name(*found), kind_name(next.kind));
        } else {
            return fmt::format("element {} ({}, tag {}) is {}, expected {}", number, next.name, found->tag,
                               found->number, *next.only_value);
        }
    }
    if (found == nullptr) {
        return furthest == 0 ? fmt::format("no elements, expected {}", vor::alternatives(expected))
                             : fmt::format("ends after element {}, expected {}", furthest, vor::alternatives(expected));
    }
    return expected.empty() ? fmt::format("unexpected element {} (tag {} {})", number, found->tag, kind_name(*found))
                            : fmt::format("element {} is tag {} {}, expected {}", number, found->tag, kind_name(*found),
                                          vor::alternatives(expected));
}

Fitting fit_chain(const MessageRows& rows, Bytes payload)
{
    std::vector<Element> elements;
    std::uint16_t cursor = 0;
    for (;;) {
        Element element{};
        const int read =
            vorinfra_next_element(payload.data(), static_cast<std::uint16_t>(payload.size()), &cursor, &element);
        if (read < 0) {
            return {.wrong = fmt::format("payload is not a chain after element {}", elements.size())};
        }
        if (read == 0) {
            break;
        }
        elements.push_back(element);
    }
    const auto row = std::ranges::find_if(rows, [&](const tables::MessageRow* one) {
        const Reach reach = compare(*one, elements);
        return reach.elements == elements.size() && reach.next == nullptr;
    });
    if (row == rows.end()) {
        return {.wrong = mismatch(rows, elements)};
    }
    Fitting fitting{.row = *row};
    const auto fields = fitting.row->layout.fields();
    for (std::size_t at = 0; at < elements.size(); ++at) {
        const tables::Field& field = fields[std::min(at, fields.size() - 1)];
        const Bytes bytes(elements[at].value, elements[at].size);
        fitting.parts.push_back({&field, bytes, field.kind == tables::Kind::byte ? bytes[0] : elements[at].number});
    }
    return fitting;
}

// ---- Records ----------------------------------------------------------------

std::int32_t number_in(const tables::Field& field, Bytes bytes)
{
    std::int32_t wide = 0;
    std::int16_t narrow = 0;
    switch (field.kind) {
    case tables::Kind::byte:
        return bytes[0];
    case tables::Kind::int16:
        std::memcpy(&narrow, bytes.data(), sizeof narrow);
        return narrow;
    case tables::Kind::int32:
        std::memcpy(&wide, bytes.data(), sizeof wide);
        return wide;
    default:
        return 0;
    }
}

Fitting fit_record(const MessageRows& rows, Bytes payload)
{
    const std::uint16_t length = rows.front()->layout.length;
    if (payload.size() != length) {
        return {.wrong = fmt::format("payload has {} bytes, expected {}", payload.size(), length)};
    }
    std::vector<std::string> expected;
    std::string wrong;
    for (const tables::MessageRow* row : rows) {
        Fitting fitting{.row = row};
        bool applies = true;
        for (const tables::Field& field : row->layout.fields()) {
            const Bytes bytes = payload.subspan(field.tag_or_offset, field.size());
            const Part part{&field, bytes, number_in(field, bytes)};
            fitting.parts.push_back(part);
            if (field.only_value && part.number != *field.only_value) {
                applies = false;
                add_alternative(expected, std::to_string(*field.only_value));
                wrong = fmt::format("{} is {}, expected {}", field.name, part.number, vor::alternatives(expected));
            }
        }
        if (!applies) {
            continue;
        }
        for (const Part& part : fitting.parts) {
            if (part.field->kind == tables::Kind::text && text_in(part).size() == part.field->length) {
                return {.wrong = fmt::format("{} is not terminated within its {} bytes", part.field->name,
                                             part.field->length)};
            }
        }
        return fitting;
    }
    return {.wrong = wrong};
}

} // namespace

std::string_view text_in(const Part& part)
{
    const std::string_view text(reinterpret_cast<const char*>(part.bytes.data()), part.bytes.size());
    return text.substr(0, text.find('\0'));
}

Fitting fit(const MessageRows& rows, Bytes payload)
{
    return rows.front()->layout.form == tables::Form::record ? fit_record(rows, payload) : fit_chain(rows, payload);
}

} // namespace vorsim::gateway
