// family.hpp: the functions by which a family's file declares its calls.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "rows/binding.hpp"

namespace vorcfg::rows {

// A row with its own arguments, before it is in the table of its family.
template <std::size_t Count>
struct Draft {
    Row row;
    std::array<Argument, Count> arguments;

    consteval Draft marked(unsigned marks) const { return with(&Row::marks, row.marks | marks); }
    consteval Draft changes(std::string_view setting) const { return with(&Row::setting, setting); }
    consteval Draft stores(std::span<const std::string_view> lines) const
    {
        return on(Channel::konfd).with(&Row::lines, lines);
    }
    consteval Draft sends(std::span<const RecordField> record) const { return with(&Row::record, record); }
    consteval Draft warns(std::span<const Rule> rules) const { return with(&Row::rules, rules); }
    consteval Draft on(Channel channel) const { return with(&Row::channel, channel); }

    template <class Member>
    consteval Draft with(Member Row::*member, Member value) const
    {
        Draft changed = *this;
        changed.row.*member = value;
        return changed;
    }
};

// Called for an invalid table. They are not constexpr, so that the compiler stops and shows the name.
void argument_is_of_a_kind_that_the_type_in_its_call_does_not_take();
void list_is_not_the_last_argument_of_a_call_with_dots();
void range_is_wider_than_the_type_in_its_call();
void argument_that_decides_whether_another_is_sent_does_not_come_before_it();
void setting_is_shared_with_no_other_call_about_as_many_objects();

consteval bool fits(const Argument& argument, Type type)
{
    switch (argument.kind) {
    case Kind::number:
        return type != Type::text && type != Type::result;
    case Kind::result:
        return type == Type::result;
    case Kind::untouched:
        return type == Type::result || type == Type::text;
    default:
        return type == Type::text;
    }
}

consteval Argument bound(Argument argument, Type type, bool listed)
{
    argument.type = type;
    if (argument.kind == Kind::by_type) {
        argument.kind = type == Type::text ? Kind::text : Kind::number;
    }
    if (!fits(argument, type)) {
        argument_is_of_a_kind_that_the_type_in_its_call_does_not_take();
    }
    if (argument.is_list != listed) {
        list_is_not_the_last_argument_of_a_call_with_dots();
    }
    const Range whole = whole_range(type);
    if (argument.kind == Kind::number && !argument.range.holds(argument.range.least)) {
        argument.range = whole;
    }
    if (argument.kind == Kind::number && argument.range.most - argument.range.least > whole.most - whole.least) {
        range_is_wider_than_the_type_in_its_call();
    }
    return argument;
}

// A call that sends its manager a message.
template <auto Function, std::size_t size>
consteval auto call(std::string_view name, const Argument (&arguments)[size], std::string_view example)
{
    using Bound = Binding<Function>;
    static_assert(size == Bound::types.size(), "a row names as many arguments as its call has");
    Draft<size> draft{{.name = name,
                       .symbol = symbol_of<Function>(),
                       .example = example,
                       .answers_record = Bound::answers_record,
                       .make = Bound::make},
                      {}};
    for (std::size_t i = 0; i < size; i++) {
        bool is_decided = arguments[i].decided_by.empty();
        for (std::size_t other = 0; other < i; other++) {
            is_decided = is_decided || arguments[other].name == arguments[i].decided_by;
        }
        if (!is_decided) {
            argument_that_decides_whether_another_is_sent_does_not_come_before_it();
        }
        draft.arguments[i] = bound(arguments[i], Bound::types[i], Bound::has_list && i + 1 == size);
    }
    return draft;
}

// A call without arguments.
template <auto Function>
consteval auto call(std::string_view name) requires(Binding<Function>::types.empty())
{
    return Draft<0>{{.name = name, .symbol = symbol_of<Function>(), .make = Binding<Function>::make}, {}};
}

// A call that does nothing, kept by the library so that programs link.
template <auto Function, std::size_t size>
consteval auto stub(std::string_view name, const Argument (&arguments)[size], std::string_view example)
{
    return call<Function>(name, arguments, example).on(Channel::none).marked(does_nothing);
}

// A call that makes no sense on its own, and what uses it.
template <auto Function>
consteval auto part(std::string_view name, std::string_view used_by)
{
    return Draft<0>{{.name = name, .symbol = symbol_of<Function>(), .channel = Channel::none, .used_by = used_by}, {}};
}

// A field of a record, by its C type; vor_ip_address is shown as an address.
template <class T>
consteval RecordField record_field(std::string_view name, std::size_t offset)
{
    RecordField field{name, static_cast<std::uint16_t>(offset), sizeof(T)};
    if constexpr (std::is_array_v<T>) {
        field.kind = RecordField::Kind::text;
    } else {
        field.kind = std::is_same_v<T, vor_ip_address> ? RecordField::Kind::address : RecordField::Kind::number;
        field.is_signed = std::is_signed_v<T> && sizeof(T) > 1; // a char is a byte
    }
    return field;
}

#define FIELD(record, field) record_field<decltype(record::field)>(#field, offsetof(record, field))

template <std::size_t Rows, std::size_t Arguments>
struct Table {
    std::array<Row, Rows> rows;
    std::array<Argument, Arguments> arguments;
};

template <std::size_t... Counts>
consteval auto table(const Family* family, const Draft<Counts>&... drafts)
{
    Table<sizeof...(Counts), (Counts + ... + 0)> all{};
    std::size_t row = 0;
    std::size_t at = 0;
    const auto add = [&](const auto& draft) {
        all.rows[row] = draft.row;
        all.rows[row].family = family;
        all.rows[row].first_argument = static_cast<std::uint16_t>(at);
        all.rows[row].argument_count = static_cast<std::uint16_t>(draft.arguments.size());
        row++;
        for (const Argument& argument : draft.arguments) {
            all.arguments[at++] = argument;
        }
    };
    (add(drafts), ...);
    const auto objects_of = [&](const Row& each) {
        const auto arguments = std::span(all.arguments).subspan(each.first_argument, each.argument_count);
        return std::ranges::count_if(arguments, &Argument::is_object);
    };
    for (const Row& each : all.rows) {
        const auto is_shared = [&](const Row& other) {
            return other.name != each.name && other.setting == each.setting && objects_of(other) == objects_of(each);
        };
        if (!each.setting.empty() && std::ranges::none_of(all.rows, is_shared)) {
            setting_is_shared_with_no_other_call_about_as_many_objects();
        }
    }
    return all;
}

// A family whose calls another header declares, with its own description.
#define FAMILY_OF(header, stem, about, ...)                                                                            \
    namespace family {                                                                                                 \
    extern const Family stem;                                                                                          \
    static constexpr auto stem##_table = table(&stem, __VA_ARGS__);                                                    \
    constinit const Family stem{#stem, stem##_table.rows, stem##_table.arguments, header, about};                      \
    }

// A family with the name of its header.
#define FAMILY(stem, ...) FAMILY_OF(#stem, stem, {}, __VA_ARGS__)

} // namespace vorcfg::rows
