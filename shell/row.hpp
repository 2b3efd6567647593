// row.hpp: one row per call of the library, and what follows from the call's
// own type: how its arguments are read, how it is called, what it hands back.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <device_mgmt.h>

namespace vorcfg {

enum class Type : std::uint8_t { uint8, byte, int16, uint16, int32, uint32, text, output };

// Where a call's message goes, and so what it needs before it can be called.
enum class Channel : std::uint8_t { manager, konfd, none };

// What the shell must know of a call beyond its type.
enum Marks : unsigned {
    answer_unread = 1, // an answered request whose answer the call never reads
    does_nothing = 2,  // kept by the library so that programs link
    confirm = 4,       // wants --yes
    stays = 8,         // what it starts ends with this process
};

// An argument as it was given. An output's value is room for its text.
struct Value {
    std::int64_t number = 0;
    std::string text;
    bool secret = false;
};

// One field that a query read.
struct Field {
    std::string name;
    std::string text;
    bool number;
};

// What a call handed back. A query that promises a record has either its
// fields or `missing`.
struct Returned {
    std::int32_t code = 0;
    bool has_code = true;
    bool missing = false;
    std::vector<Field> fields;
};

struct Argument {
    std::string_view name;
    Type type = Type::text;
    bool secret = false;  // name*: never a literal on the command line
    bool unsent = false;  // name-: accepted, never sent
    bool output = false;  // name>: a result, not an argument
    bool counted = false; // name#: the number of texts in the list
    bool list = false;    // name...: the texts behind the fixed arguments
    bool address = false; // name@: a dotted quad, which the call would send as 0.0.0.0 if it did not parse
    unsigned bits = 0;    // name:16: a number in a text, which the call cuts to so many bits
};

struct Row {
    std::string_view family;
    std::string_view name;
    std::string_view arguments; // their names, marked as in Argument
    std::string_view summary;   // the first sentence of the header
    std::string_view example;   // a line's worth of arguments
    std::string_view symbol;    // the call's exported name
    std::span<const Type> types;
    Channel channel = Channel::manager;
    unsigned marks = 0;
    std::size_t list_limit = 0;
    std::string_view covered_by = {}; // a part of a longer conversation: what exercises it
    Returned (*call)(std::span<Value> values, const std::vector<Argument>& arguments) = nullptr;
};

std::vector<Argument> arguments_of(const Row& row);

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
        static_assert(std::is_pointer_v<T>, "no way to read this argument");
        return Type::output;
    }
}

Field number_field(std::string_view name, std::uint64_t value);
void tell(std::vector<Field>& fields, const GPIO_PIN_STATS& record);
void tell(std::vector<Field>& fields, const ADC_PIN_STATS& record);
void tell(std::vector<Field>& fields, const SUB1G_CONFIG_REG& record);

// One argument on its way into a call: what is passed, and what is told of it
// afterwards.
template <class T>
struct Slot {
    T value;
    explicit Slot(Value& given) : value(static_cast<T>(given.number)) {}
    T pass() { return value; }
    void told(Returned&, const Argument&) const {}
};

template <>
struct Slot<vor_char*> {
    vor_char* value;
    explicit Slot(Value& given) : value(given.text.data()) {}
    vor_char* pass() const { return value; }
    void told(Returned&, const Argument&) const {}
};

template <class T>
struct OutputSlot {
    T room{};
    explicit OutputSlot(Value&) {}
    T* pass() { return &room; }
};

template <>
struct Slot<vor_int16*> : OutputSlot<vor_int16> {
    using OutputSlot::OutputSlot;
    void told(Returned& back, const Argument& argument) const
    {
        back.fields.push_back({std::string(argument.name), std::to_string(room), true});
    }
};

template <>
struct Slot<vor_uint16*> : OutputSlot<vor_uint16> {
    using OutputSlot::OutputSlot;
    void told(Returned&, const Argument&) const {} // of calls that leave it alone
};

// The only 32-bit outputs are IPv4 addresses in network byte order.
template <>
struct Slot<vor_ip_address*> : OutputSlot<vor_ip_address> {
    using OutputSlot::OutputSlot;
    void told(Returned& back, const Argument& argument) const;
};

// The only byte outputs are the six bytes of a MAC address.
template <>
struct Slot<vor_uchar*> {
    std::array<vor_uchar, 6> room{};
    explicit Slot(Value&) {}
    vor_uchar* pass() { return room.data(); }
    void told(Returned& back, const Argument& argument) const;
};

// A record in a buffer that is already handed back: copied before anything
// else happens.
template <class Record>
struct Slot<Record**> : OutputSlot<Record*> {
    using OutputSlot<Record*>::OutputSlot;
    void told(Returned& back, const Argument&) const
    {
        back.missing = this->room == nullptr;
        if (!back.missing) {
            const Record copy = *this->room;
            tell(back.fields, copy);
        }
    }
};

template <class Result>
Returned returned(Result result)
{
    Returned back;
    if constexpr (std::is_pointer_v<Result>) {
        back.has_code = false;
        back.missing = result == nullptr;
        if (result != nullptr) {
            const auto copy = *result;
            tell(back.fields, copy);
        }
    } else if constexpr (std::is_same_v<Result, vor_uchar>) {
        back.has_code = false;
        back.fields.push_back(number_field("value", result));
    } else {
        back.code = result;
    }
    return back;
}

template <auto Function, class Type>
struct Caller;

template <auto Function, class Result, class... Arguments>
struct Caller<Function, Result (*)(Arguments...)> {
    static constexpr std::array<Type, sizeof...(Arguments)> types{type_of<Arguments>()...};
    static constexpr bool variable = false;

    static Returned call(std::span<Value> values, const std::vector<Argument>& arguments)
    {
        return call_with(values, arguments, std::index_sequence_for<Arguments...>());
    }

    template <std::size_t... I>
    static Returned call_with([[maybe_unused]] std::span<Value> values,
                              [[maybe_unused]] const std::vector<Argument>& arguments, std::index_sequence<I...>)
    {
        std::tuple<Slot<Arguments>...> slots{Slot<Arguments>(values[I])...};
        Returned back = returned(Function(std::get<I>(slots).pass()...));
        if (back.code == 0) {
            (std::get<I>(slots).told(back, arguments[I]), ...);
        }
        return back;
    }
};

constexpr std::size_t most_listed = 255; // the widest count that a call takes is 8 bits

// The texts of the list are passed whole, whatever their number: the call
// reads as many as its count says.
template <auto Function, class Result, class... Arguments>
struct Caller<Function, Result (*)(Arguments..., ...)> {
    static constexpr std::array<Type, sizeof...(Arguments)> types{type_of<Arguments>()...};
    static constexpr bool variable = true;

    static Returned call(std::span<Value> values, const std::vector<Argument>&)
    {
        std::array<vor_char*, most_listed> listed{};
        for (std::size_t i = sizeof...(Arguments); i < values.size(); i++) {
            listed[i - sizeof...(Arguments)] = values[i].text.data();
        }
        return call_with(values, listed, std::index_sequence_for<Arguments...>(),
                         std::make_index_sequence<most_listed>());
    }

    template <std::size_t... I, std::size_t... L>
    static Returned call_with(std::span<Value> values, const std::array<vor_char*, most_listed>& listed,
                              std::index_sequence<I...>, std::index_sequence<L...>)
    {
        return returned(Function(Slot<Arguments>(values[I]).pass()..., listed[L]...));
    }
};

constexpr std::size_t count_words(std::string_view text)
{
    std::size_t words = 0;
    for (std::size_t i = 0; i < text.size(); i++) {
        words += text[i] != ' ' && (i == 0 || text[i - 1] == ' ') ? 1 : 0;
    }
    return words;
}

template <auto Function>
constexpr Row command(std::string_view family, std::string_view name, std::string_view arguments,
                      std::string_view summary, std::string_view example, unsigned marks = 0)
{
    using Call = Caller<Function, decltype(Function)>;
    if (count_words(arguments) != Call::types.size() + (Call::variable ? 1 : 0)) {
        throw "the names do not count up to the call's arguments";
    }
    if (Call::variable && !arguments.ends_with("...")) {
        throw "the last name of a call with a list ends with three dots";
    }
    Row row{family, name, arguments, summary, example, symbol_of<Function>(), Call::types};
    row.marks = marks;
    row.list_limit = Call::variable ? most_listed : 0;
    row.call = Call::call;
    return row;
}

// A call that talks to konfd instead of a manager.
template <auto Function>
constexpr Row stored(std::string_view family, std::string_view name, std::string_view arguments,
                     std::string_view summary, std::string_view example)
{
    Row row = command<Function>(family, name, arguments, summary, example);
    row.channel = Channel::konfd;
    return row;
}

// A call that sends nothing.
template <auto Function>
constexpr Row local(std::string_view family, std::string_view name, std::string_view arguments,
                    std::string_view summary, std::string_view example, unsigned marks = 0)
{
    Row row = command<Function>(family, name, arguments, summary, example, marks);
    row.channel = Channel::none;
    return row;
}

// A call that makes no sense on its own.
template <auto Function>
constexpr Row part(std::string_view family, std::string_view name, std::string_view summary,
                   std::string_view covered_by)
{
    Row row{family, name, {}, summary, {}, symbol_of<Function>(), {}};
    row.channel = Channel::none;
    row.covered_by = covered_by;
    return row;
}

} // namespace vorcfg
