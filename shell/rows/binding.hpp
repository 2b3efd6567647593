// binding.hpp: what follows from the C type of a call: the types of its arguments, how it is called, what it returns.
#pragma once

#include <array>
#include <concepts>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include <device_mgmt/types.h>

#include "rows/row.hpp"

namespace vorcfg::rows {

// The exported name of a function, as the compiler spells it.
template <auto Function>
constexpr std::string_view symbol_of()
{
    std::string_view text = __PRETTY_FUNCTION__;
    text.remove_prefix(text.find("Function = ") + 11);
    if (text.front() == '&') {
        text.remove_prefix(1);
    }
    return text.substr(0, text.find_first_of(";]"));
}

template <class T>
constexpr Type type_of()
{
    if constexpr (std::is_same_v<T, vor_uchar>) {
        return Type::uint8;
    } else if constexpr (std::is_same_v<T, vor_char>) {
        return Type::byte;
    } else if constexpr (std::is_same_v<T, vor_int16>) {
        return Type::int16;
    } else if constexpr (std::is_same_v<T, vor_uint16>) {
        return Type::uint16;
    } else if constexpr (std::is_same_v<T, vor_int32>) {
        return Type::int32;
    } else if constexpr (std::is_same_v<T, vor_uint32>) {
        return Type::uint32;
    } else if constexpr (std::is_same_v<T, vor_char*>) {
        return Type::text;
    } else {
        static_assert(std::is_pointer_v<T>, "arguments of this type cannot be read");
        return Type::result;
    }
}

constexpr Range whole_range(Type type)
{
    switch (type) {
    case Type::uint8:
    case Type::byte: // a char, signed or not by processor: on the wire it is a byte
        return range_of<std::uint8_t>;
    case Type::int16:
        return range_of<std::int16_t>;
    case Type::uint16:
        return range_of<std::uint16_t>;
    case Type::int32:
        return range_of<std::int32_t>;
    case Type::uint32:
        return range_of<std::uint32_t>;
    default:
        return {};
    }
}

// The results of calls as fields. Six bytes are a MAC address. A family whose calls answer a record has an
// `append_fields` for it.
using Fields = std::vector<Field>;
void append_field(Fields& fields, std::string_view name, std::integral auto number)
{
    fields.push_back({std::string(name), std::to_string(number)});
}
void append_field(Fields& fields, std::string_view name, const vor_ip_address* address);
void append_field(Fields& fields, std::string_view name, const vor_uchar* mac);

// One argument of a call: what is passed, and what is shown of it afterwards.
template <class T>
struct Slot {
    T value;
    explicit Slot(Value& given) : value(static_cast<T>(given.number)) {}
    T pass() const { return value; }
    void append(Returned&, const Argument&) const {}
};

template <>
struct Slot<vor_char*> {
    vor_char* value;
    explicit Slot(Value& given) : value(given.text.data()) {}
    vor_char* pass() const { return value; }
    void append(Returned&, const Argument&) const {}
};

template <class T>
struct Slot<T*> {
    std::array<T, 6> buffer{}; // six bytes of a MAC address are the largest result
    explicit Slot(Value&) {}
    T* pass() { return buffer.data(); }
    void append(Returned& back, const Argument& argument) const
    {
        if (argument.kind == Kind::result) {
            if constexpr (sizeof(T) == 2) {
                append_field(back.fields, argument.name, buffer.front());
            } else {
                append_field(back.fields, argument.name, buffer.data());
            }
        }
    }
};

// A record in a buffer that is already released: copied before anything else happens.
template <class Record>
void append_record(Returned& back, const Record* record)
{
    back.missing = record == nullptr;
    if (record != nullptr) {
        const Record copy = *record;
        append_fields(back.fields, copy);
    }
}

template <class Record>
struct Slot<Record**> {
    Record* record = nullptr;
    explicit Slot(Value&) {}
    Record** pass() { return &record; }
    void append(Returned& back, const Argument&) const { append_record(back, record); }
};

template <class Result>
Returned returned(Result result)
{
    Returned back;
    if constexpr (std::is_pointer_v<Result>) {
        append_record(back, result);
    } else if constexpr (std::is_same_v<Result, vor_uchar>) {
        append_field(back.fields, "value", result);
    } else {
        back.code = result;
    }
    return back;
}

constexpr std::size_t most_listed = 255; // the count that a call takes has 8 bits at most

template <auto Function, class Type = decltype(Function)>
struct Binding;

// Records are answered as a pointer, or through a pointer to one.
template <class Argument>
constexpr bool takes_record = std::is_pointer_v<Argument>&& std::is_pointer_v<std::remove_pointer_t<Argument>>;

template <auto Function, class Result, class... Arguments>
struct Binding<Function, Result (*)(Arguments...)> {
    static constexpr std::array<Type, sizeof...(Arguments)> types{type_of<Arguments>()...};
    static constexpr bool has_list = false;
    static constexpr bool answers_record = std::is_pointer_v<Result> || (takes_record<Arguments> || ...);

    static Returned make([[maybe_unused]] const Row& row, [[maybe_unused]] std::span<Value> values)
    {
        return [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            std::tuple<Slot<Arguments>...> slots{Slot<Arguments>(values[I])...};
            Returned back = returned(Function(std::get<I>(slots).pass()...));
            if (back.code.value_or(0) == 0) {
                (std::get<I>(slots).append(back, row.arguments()[I]), ...);
            }
            return back;
        }
        (std::index_sequence_for<Arguments...>());
    }
};

// All places of the list are passed, however many are used: the call reads as many as its count says.
template <auto Function, class Result, class... Arguments>
struct Binding<Function, Result (*)(Arguments..., ...)> {
    static constexpr std::array<Type, sizeof...(Arguments) + 1> types{type_of<Arguments>()..., Type::text};
    static constexpr bool has_list = true;
    static constexpr bool answers_record = false;

    static Returned make(const Row&, std::span<Value> values)
    {
        std::array<vor_char*, most_listed> listed{};
        for (std::size_t i = sizeof...(Arguments); i < values.size(); i++) {
            listed[i - sizeof...(Arguments)] = values[i].text.data();
        }
        return [&]<std::size_t... I, std::size_t... L>(std::index_sequence<I...>, std::index_sequence<L...>)
        {
            return returned(Function(Slot<Arguments>(values[I]).pass()..., listed[L]...));
        }
        (std::index_sequence_for<Arguments...>(), std::make_index_sequence<most_listed>());
    }
};

} // namespace vorcfg::rows
