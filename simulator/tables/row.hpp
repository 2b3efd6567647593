// row.hpp: how the managers describe the messages they accept.
//
// A family file holds one constexpr row per call. The tables are independent of the library, so that they find a wrong
// tag there.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "tables/saps.hpp"

namespace vorsim::gateway {
struct Decoded;
struct Answer;
class State;
class Measurements;
} // namespace vorsim::gateway

namespace vorsim::tables {

// In a chain, byte is a raw element of one byte; in a record it is a byte.
enum class Kind : std::uint8_t { byte, int16, int32, text };
// How a value is shown.
enum class Display : std::uint8_t { signed_number, unsigned_number, address, text, secret };

// An element of a chain or a field of a record.
struct Field {
    std::uint16_t tag_or_offset{};
    Kind kind{};
    Display display{};
    std::uint16_t length{}; // a record's text: the bytes it has there
    std::string_view name{};
    bool repeated{};                          // the last of a chain, any number of times
    std::string_view counted_by{};            // the field that says how many times
    std::optional<std::int32_t> only_value{}; // the row applies to this value alone

    constexpr Field holding(std::int32_t value) const
    {
        Field field = *this;
        field.only_value = value;
        return field;
    }
    constexpr Field secret() const
    {
        Field field = *this;
        field.display = Display::secret;
        return field;
    }
    constexpr Field repeats(std::string_view count = {}) const
    {
        Field field = *this;
        field.repeated = true;
        field.counted_by = count;
        return field;
    }
    constexpr std::uint16_t size() const
    {
        return kind == Kind::byte ? 1 : kind == Kind::int16 ? 2 : kind == Kind::int32 ? 4 : length;
    }
};

constexpr Field byte(std::uint16_t at, std::string_view name)
{
    return {.tag_or_offset = at, .kind = Kind::byte, .display = Display::unsigned_number, .name = name};
}
constexpr Field int16(std::uint16_t at, std::string_view name)
{
    return {.tag_or_offset = at, .kind = Kind::int16, .display = Display::signed_number, .name = name};
}
constexpr Field uint16(std::uint16_t at, std::string_view name)
{
    return {.tag_or_offset = at, .kind = Kind::int16, .display = Display::unsigned_number, .name = name};
}
constexpr Field int32(std::uint16_t at, std::string_view name)
{
    return {.tag_or_offset = at, .kind = Kind::int32, .display = Display::signed_number, .name = name};
}
constexpr Field uint32(std::uint16_t at, std::string_view name)
{
    return {.tag_or_offset = at, .kind = Kind::int32, .display = Display::unsigned_number, .name = name};
}
constexpr Field address(std::uint16_t at, std::string_view name)
{
    return {.tag_or_offset = at, .kind = Kind::int32, .display = Display::address, .name = name};
}
constexpr Field text(std::uint16_t at, std::string_view name, std::uint16_t length = 0)
{
    return {.tag_or_offset = at, .kind = Kind::text, .display = Display::text, .length = length, .name = name};
}

enum class Form : std::uint8_t {
    chain,       // elements only
    option_byte, // a byte in the meta-data area, elements in the payload
    flag_byte,   // a byte at the start of the payload, followed by elements
    record,      // fields at fixed offsets, one exact length (0: an empty request)
};

constexpr std::size_t fields_max = 13;

// The contents of a message's areas.
struct Layout {
    Form form{};
    std::uint16_t length{};
    std::string_view lead{}; // the name of the option or flag byte
    std::array<Field, fields_max> all{};
    std::size_t count{};

    constexpr std::span<const Field> fields() const { return {all.data(), count}; }
    constexpr void add(const Field& field) { all[count++] = field; }
};

template <class... Fields>
constexpr Layout layout_of(Form form, std::uint16_t length, std::string_view lead, Fields... fields)
{
    static_assert(sizeof...(fields) <= fields_max);
    return {.form = form, .length = length, .lead = lead, .all = {fields...}, .count = sizeof...(fields)};
}
template <class... Fields>
constexpr Layout chain(Fields... fields)
{
    return layout_of(Form::chain, 0, {}, fields...);
}
template <class... Fields>
constexpr Layout option_and_chain(std::string_view option, Fields... fields)
{
    return layout_of(Form::option_byte, 0, option, fields...);
}
template <class... Fields>
constexpr Layout flag_and_chain(std::string_view flag, Fields... fields)
{
    return layout_of(Form::flag_byte, 0, flag, fields...);
}
template <class... Fields>
constexpr Layout record(std::uint16_t length, Fields... fields)
{
    return layout_of(Form::record, length, {}, fields...);
}
constexpr Layout nothing = record(0);

constexpr std::int32_t any_manager = -1;
constexpr std::int32_t family_manager = -2;

// A message's address and how its manager answers.
struct Exchange {
    std::int32_t manager = family_manager; // else a SAP, or any
    std::uint32_t id{};
    bool answered{};
    std::uint32_t answer_id{};
    std::int32_t accepted{}; // the status that means accepted

    consteval Exchange to(std::string_view other_manager) const
    {
        Exchange exchange = *this;
        exchange.manager = sap_of(other_manager);
        return exchange;
    }
    constexpr Exchange to_any_manager() const
    {
        Exchange exchange = *this;
        exchange.manager = any_manager;
        return exchange;
    }
    constexpr Exchange answered_as(std::uint32_t other_id) const
    {
        Exchange exchange = *this;
        exchange.answer_id = other_id;
        return exchange;
    }
    constexpr Exchange accepted_with(std::int32_t status) const
    {
        Exchange exchange = *this;
        exchange.accepted = status;
        return exchange;
    }
};

// A message that is answered.
constexpr Exchange request(std::uint32_t id)
{
    return {.id = id, .answered = true, .answer_id = id};
}
// A message that is not.
constexpr Exchange one_way(std::uint32_t id)
{
    return {.id = id};
}

// The answer to a query; a setting is answered with its status alone.
using Query = gateway::Answer (*)(const gateway::Decoded& decoded, const gateway::State& state,
                                  gateway::Measurements& measurements);

// Not defined: calling one makes a row that breaks the rule fail to compile.
void the_object_names_no_field_of_the_message();
void a_field_lies_outside_the_record();
void only_the_last_element_repeats();
void the_count_names_no_field_of_the_message();

// One accepted form of one message. The object is what the message is about:
// text with field names in braces. Of the calls that share a slot an object
// keeps the latest only (a route added, then removed). A row that breaks these
// rules does not compile.
struct MessageRow {
    Exchange exchange;
    std::string_view call{}; // the library's function that sends it
    std::string_view object;
    Layout layout;
    std::string_view slot;
    Query query;

    constexpr MessageRow(const Exchange& travels, std::string_view sent_by, std::string_view about,
                         const Layout& carries, std::string_view shared_slot = {}, Query answers = nullptr)
        : exchange(travels), call(sent_by), object(about), layout(carries), slot(shared_slot), query(answers)
    {
        for (std::size_t at = object.find('{'); at != object.npos; at = object.find('{', at + 1)) {
            const std::size_t end = object.find('}', at);
            if (end == object.npos || !names(object.substr(at + 1, end - at - 1))) {
                the_object_names_no_field_of_the_message();
            }
        }
        for (const Field& field : layout.fields()) {
            if (layout.form == Form::record && field.tag_or_offset + field.size() > layout.length) {
                a_field_lies_outside_the_record();
            }
            if (field.repeated && &field != &layout.fields().back()) {
                only_the_last_element_repeats();
            }
            if (!field.counted_by.empty() && !names(field.counted_by)) {
                the_count_names_no_field_of_the_message();
            }
        }
    }

    // A row whose message is a query.
    constexpr MessageRow(const Exchange& travels, std::string_view sent_by, std::string_view about,
                         const Layout& carries, Query answers)
        : MessageRow(travels, sent_by, about, carries, {}, answers)
    {
    }

    constexpr bool names(std::string_view field_name) const
    {
        for (const Field& field : layout.fields()) {
            if (field.name == field_name) {
                return true;
            }
        }
        return false;
    }
};

// A measurement or a counter that can be set. The name is a pattern: * is any text.
struct Reading {
    std::string_view name{};
    std::int64_t least{};
    std::uint64_t most{};
    bool counts{};

    constexpr Reading() = default;
    constexpr Reading(std::string_view named, std::int64_t from, std::uint64_t to, bool is_counter = false)
        : name(named), least(from), most(to), counts(is_counter)
    {
    }
    struct Counter {};
    constexpr Reading(std::string_view named, Counter) : Reading(named, 0, UINT64_MAX, true) {}
};

// A counter of 64 bits.
constexpr Reading::Counter counter{};

} // namespace vorsim::tables
