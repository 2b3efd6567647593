/*
 * table.hpp: how the managers describe the messages they accept.
 *
 * A family file holds one constexpr row per call. The tables are the managers'
 * own: a wrong tag in the library cannot agree with itself here.
 */
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vorsim {

/* In a chain, byte is a raw element of one byte; in a record it is a byte. */
enum class Kind : std::uint8_t { byte, int16, int32, text };
enum class Look : std::uint8_t { number, natural, address, text, secret };

struct Field {
    std::uint16_t place{}; // the tag in a chain, the offset in a record
    Kind kind{};
    Look look{};
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
        field.look = Look::secret;
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

constexpr Field byte(std::uint16_t place, std::string_view name)
{
    return {.place = place, .kind = Kind::byte, .look = Look::natural, .name = name};
}
constexpr Field int16(std::uint16_t place, std::string_view name)
{
    return {.place = place, .kind = Kind::int16, .look = Look::number, .name = name};
}
constexpr Field uint16(std::uint16_t place, std::string_view name)
{
    return {.place = place, .kind = Kind::int16, .look = Look::natural, .name = name};
}
constexpr Field int32(std::uint16_t place, std::string_view name)
{
    return {.place = place, .kind = Kind::int32, .look = Look::number, .name = name};
}
constexpr Field uint32(std::uint16_t place, std::string_view name)
{
    return {.place = place, .kind = Kind::int32, .look = Look::natural, .name = name};
}
constexpr Field address(std::uint16_t place, std::string_view name)
{
    return {.place = place, .kind = Kind::int32, .look = Look::address, .name = name};
}
constexpr Field text(std::uint16_t place, std::string_view name, std::uint16_t length = 0)
{
    return {.place = place, .kind = Kind::text, .look = Look::text, .length = length, .name = name};
}

enum class Form : std::uint8_t {
    chain,       // elements only
    option_lead, // a byte in the meta-data area, elements in the payload
    flag_lead,   // a byte at the start of the payload, elements behind it
    record,      // fields at fixed offsets, one exact length (0: an empty request)
};

constexpr std::size_t fields_max = 13;

struct Payload {
    Form form{};
    std::uint16_t length{};
    std::string_view lead{}; // the name of the option or flag byte
    std::array<Field, fields_max> row{};
    std::size_t count{};

    constexpr std::span<const Field> fields() const { return {row.data(), count}; }
    constexpr void add(const Field& field) { row[count++] = field; }
};

template <class... Fields>
constexpr Payload payload_of(Form form, std::uint16_t length, std::string_view lead, Fields... fields)
{
    static_assert(sizeof...(fields) <= fields_max);
    return {.form = form, .length = length, .lead = lead, .row = {fields...}, .count = sizeof...(fields)};
}
template <class... Fields>
constexpr Payload chain(Fields... fields)
{
    return payload_of(Form::chain, 0, {}, fields...);
}
template <class... Fields>
constexpr Payload option_and_chain(std::string_view option, Fields... fields)
{
    return payload_of(Form::option_lead, 0, option, fields...);
}
template <class... Fields>
constexpr Payload flag_and_chain(std::string_view flag, Fields... fields)
{
    return payload_of(Form::flag_lead, 0, flag, fields...);
}
template <class... Fields>
constexpr Payload record(std::uint16_t length, Fields... fields)
{
    return payload_of(Form::record, length, {}, fields...);
}
constexpr Payload nothing = record(0);

constexpr std::int32_t any_sap = -1;

/* What a message is addressed by and how its manager answers. */
struct Message {
    std::int32_t sap{};
    std::uint32_t id{};
    bool answered{};
    std::uint32_t answer_id{};
    std::int32_t accepted{}; // the status that tells acceptance

    constexpr Message answered_as(std::uint32_t other_id) const
    {
        Message message = *this;
        message.answer_id = other_id;
        return message;
    }
    constexpr Message accepted_with(std::int32_t status) const
    {
        Message message = *this;
        message.accepted = status;
        return message;
    }
};

constexpr Message asks(std::int32_t sap, std::uint32_t id)
{
    return {.sap = sap, .id = id, .answered = true, .answer_id = id};
}
constexpr Message tells(std::int32_t sap, std::uint32_t id)
{
    return {.sap = sap, .id = id};
}

struct Told;
struct Reply;
class State;
class Readings;

/* What a query answers; a setting answers its status alone. */
using Query = Reply (*)(const Told& told, const State& state, Readings& readings);

/*
 * One accepted form of one message. The object is what the message concerns:
 * text with field names in braces. Of the calls that share a slot an object
 * keeps the latest only (a route added, then removed). A row that breaks these
 * rules does not compile.
 */
struct Call {
    Message message;
    std::string_view name{};
    std::string_view object;
    Payload payload;
    std::string_view slot;
    Query query;

    constexpr Call(const Message& to, std::string_view call, std::string_view concerned, const Payload& carried,
                   std::string_view shared_slot = {}, Query answer = nullptr)
        : message(to), name(call), object(concerned), payload(carried), slot(shared_slot), query(answer)
    {
        for (std::size_t at = object.find('{'); at != object.npos; at = object.find('{', at + 1)) {
            const std::size_t end = object.find('}', at);
            if (end == object.npos || !names(object.substr(at + 1, end - at - 1))) {
                throw "the object names no field of the message";
            }
        }
        for (const Field& field : payload.fields()) {
            if (payload.form == Form::record && field.place + field.size() > payload.length) {
                throw "a field lies outside the record";
            }
            if (field.repeated && &field != &payload.fields().back()) {
                throw "only the last element repeats";
            }
            if (!field.counted_by.empty() && !names(field.counted_by)) {
                throw "the count names no field of the message";
            }
        }
    }

    constexpr bool names(std::string_view field_name) const
    {
        for (const Field& field : payload.fields()) {
            if (field.name == field_name) {
                return true;
            }
        }
        return false;
    }
};

struct Family {
    std::string_view stem;
    std::span<const Call> calls;
};

struct Manager {
    std::uint16_t sap;
    std::string_view name{};
};

std::span<const Family* const> families();
std::span<const Manager> managers();

/* "ethmgr"; empty for a SAP that is no manager's. */
std::string_view manager_name(std::uint16_t sap);

} // namespace vorsim
