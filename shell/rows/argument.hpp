// argument.hpp: what is known of an argument of a call. Parsing, help, ranges, completion and JSON are derived from it.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace vorcfg::rows {

struct Value;

// What no site intends to give, in words after the argument's name; empty: nothing.
using Doubt = std::string (*)(const Value& value);
std::string doubt_about_port(const Value& value); // 0
std::string doubt_about_mask(const Value& value); // holes

// The C type of an argument.
enum class Type : std::uint8_t { uint8, byte, int16, uint16, int32, uint32, text, result };

// How its word is read.
enum class Kind : std::uint8_t {
    by_type, // a number or a text, as its C type says
    number,
    text,
    ipv4,    // a dotted quad; the call would send another address for one that does not parse
    decimal, // a number in a text
    result,
    untouched, // a result that the call never writes
};

// A word for a number; for a text, the word itself.
struct Choice {
    std::string_view name;
    std::int64_t number = 0;
    bool idle = false;  // with it the call changes nothing on the gateway
    bool every = false; // stands for all the others
};

struct Range {
    std::int64_t least = 0;
    std::int64_t most = -1; // less than the least: none given
    constexpr bool holds(std::int64_t number) const { return least <= number && number <= most; }
};

template <class T>
constexpr Range range_of = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};

// clang-format off
struct Argument {
    std::string_view name;
    Kind kind = Kind::by_type;
    Type type{};
    bool is_secret = false;        // never a literal on the command line, masked in all output
    bool is_sent = true;
    bool is_object = false;        // names what the call is about
    bool is_count = false;         // of the list; it is counted, not typed
    bool is_list = false;          // the texts after the fixed arguments
    bool is_optional = false;      // of a call that reads its own words
    std::uint16_t most_bytes = 0;  // of a text; 0: what fits in the message
    std::uint16_t most_listed = 0;
    Range range{};                 // the numbers that reach the manager unchanged
    std::span<const Choice> choices{};
    std::string_view decided_by{}; // an earlier argument: this one is sent only where that is `decided_at`
    Choice decided_at{};
    Doubt doubt = nullptr;

    constexpr Argument() = default;
    constexpr Argument(const char* its_name, Kind its_kind = Kind::by_type) : name(its_name), kind(its_kind) {}

    constexpr Argument secret() const { auto a = *this; a.is_secret = true; return a; }
    constexpr Argument unsent() const { auto a = *this; a.is_sent = false; return a; }
    constexpr Argument object() const { auto a = *this; a.is_object = true; return a; }
    constexpr Argument optional() const { auto a = *this; a.is_optional = true; return a; }
    constexpr Argument counted() const { auto a = *this; a.is_count = true; return a; }
    constexpr Argument at_most(std::uint16_t bytes) const { auto a = *this; a.most_bytes = bytes; return a; }
    constexpr Argument between(std::int64_t least, std::int64_t most) const { auto a = *this; a.range = {least, most}; return a; }
    constexpr Argument only_where(std::string_view other, Choice is) const { auto a = *this; a.decided_by = other; a.decided_at = is; return a; }
    constexpr Argument warns(Doubt about) const { auto a = *this; a.doubt = about; return a; }
    template <class T> // the type that the call cuts it to
    constexpr Argument fits() const { auto a = *this; a.range = range_of<T>; return a; }
    constexpr Argument choices_of(std::span<const Choice> words) const { auto a = *this; a.choices = words; return a; }
    constexpr Argument list(std::uint16_t most) const { auto a = *this; a.is_list = true; a.most_listed = most; return a; }

    constexpr bool is_result() const { return kind == Kind::result || kind == Kind::untouched; }
    constexpr bool is_number() const { return kind == Kind::number || kind == Kind::decimal; }
    constexpr bool is_given() const { return !is_result() && !is_count; } // is typed
};

constexpr Argument object(const char* name) { return Argument(name).object(); }
constexpr Argument unsent(const char* name) { return Argument(name).unsent(); }
constexpr Argument number(const char* name) { return {name, Kind::number}; }
constexpr Argument count(const char* name) { return number(name).counted(); }
constexpr Argument port(const char* name) { return number(name).fits<std::uint16_t>().warns(doubt_about_port); } // whatever its C type
constexpr Argument text(const char* name) { return {name, Kind::text}; }
constexpr Argument ipv4(const char* name) { return {name, Kind::ipv4}; }
constexpr Argument netmask(const char* name) { return ipv4(name).warns(doubt_about_mask); }
template <class T> // the type that the call cuts the number in the text to
constexpr Argument decimal(const char* name) { return Argument(name, Kind::decimal).fits<T>(); }
// One of the words, and nothing else.
constexpr Argument word(const char* name, std::span<const Choice> words) { return text(name).choices_of(words); }
constexpr Argument result(const char* name) { return {name, Kind::result}; }
constexpr Argument untouched(const char* name) { return {name, Kind::untouched}; }
// clang-format on

} // namespace vorcfg::rows
