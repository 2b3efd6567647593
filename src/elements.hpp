// The elements of a chain and the fields of a record, as a call writes them.
#pragma once

#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include "frame.hpp"

namespace device_mgmt {

enum class Kind : vor_uchar {
    int16,
    int32,
    string,
    byte,
    address, // a dotted quad; a text that does not parse, or a null one, is sent as 0
    number,  // 16 bits of a number in a text; no text at all is 0
    strings, // every further argument of the call, under one tag
    addresses,
    end, // of the elements
};

// An element's value on its way to the engine: a number or a pointer.
using Argument = std::intptr_t;

// The variable arguments of an exported function, which are texts.
struct Texts {
    vor_int32 count;
    va_list list;
};

template <Kind kind_, vor_uchar tag_, bool in_record_ = false>
struct Element {
    static constexpr Kind kind = kind_;
    static constexpr vor_uchar tag = tag_; // a field's offset in its record
    static constexpr bool in_record = in_record_;
    Argument value;

    constexpr explicit Element(std::integral auto number) : value(static_cast<Argument>(number)) {}
    explicit Element(void* pointer) : value(reinterpret_cast<Argument>(pointer)) {}
};

// The byte before the elements, if the frame has one.
template <Policy place>
struct LeadingByte {
    Argument value;
};

constexpr LeadingByte<option_byte> option(std::integral auto low_byte)
{
    return {static_cast<vor_uchar>(low_byte)};
}

constexpr LeadingByte<flag_byte> flag(bool value)
{
    return {value};
}

template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) <= 2) constexpr auto int16(Value value)
{
    return Element<Kind::int16, tag>(value);
}

// An argument wider than its element, cut on purpose.
template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) == 4) constexpr auto low16(Value value)
{
    return Element<Kind::int16, tag>(value);
}

template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) <= 4) constexpr auto int32(Value value)
{
    return Element<Kind::int32, tag>(value);
}

template <vor_uchar tag>
auto str(vor_char* text)
{
    return Element<Kind::string, tag>(text);
}

template <vor_uchar tag>
constexpr auto byte(vor_uchar value)
{
    return Element<Kind::byte, tag>(value);
}

template <vor_uchar tag>
auto address(vor_char* text)
{
    return Element<Kind::address, tag>(text);
}

template <vor_uchar tag>
auto number(vor_char* text)
{
    return Element<Kind::number, tag>(text);
}

template <vor_uchar tag>
auto strings(Texts& texts)
{
    return Element<Kind::strings, tag>(&texts);
}

template <vor_uchar tag>
auto addresses(Texts& texts)
{
    return Element<Kind::addresses, tag>(&texts);
}

template <class Member>
constexpr Kind field_kind = sizeof(Member) == 1   ? Kind::byte
                            : sizeof(Member) == 2 ? Kind::int16
                                                  : Kind::int32;

template <std::size_t offset, class Member, std::integral Value>
requires(sizeof(Value) <= sizeof(Member)) constexpr auto field(Value value)
{
    return Element<field_kind<Member>, offset, true>(value);
}

template <std::size_t offset>
auto address_field(vor_char* text)
{
    return Element<Kind::address, offset, true>(text);
}

template <std::size_t offset, class Member>
requires(sizeof(Member) == 2) auto number_field(vor_char* text)
{
    return Element<Kind::number, offset, true>(text);
}

#define FIELD(record, member) field<offsetof(record, member), decltype(record::member)>
#define ADDRESS_FIELD(record, member) address_field<offsetof(record, member)>
#define NUMBER_FIELD(record, member) number_field<offsetof(record, member), decltype(record::member)>

} // namespace device_mgmt
