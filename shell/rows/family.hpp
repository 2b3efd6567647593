// family.hpp: how a family's file says what its calls are.
#pragma once

#include <algorithm>

#include "rows/binding.hpp"

namespace vorcfg {

// A row before it stands in its family, with its own arguments.
template <std::size_t Count>
struct Draft {
    Row row;
    std::array<Argument, Count> arguments;

    consteval Draft marked(unsigned marks) const
    {
        Draft changed = *this;
        changed.row.marks |= marks;
        return changed;
    }
    consteval Draft undone_by(std::string_view call) const
    {
        Draft changed = *this;
        changed.row.undone_by = call;
        return changed;
    }
    consteval Draft on(Channel channel) const
    {
        Draft changed = *this;
        changed.row.channel = channel;
        return changed;
    }
};

// A throw ends the compilation, which shows its sentence.
consteval Argument bound(Argument argument, Type type, bool listed)
{
    const bool is_text = type == Type::text;
    argument.type = type;
    if (argument.kind == Kind::by_type) {
        argument.kind = is_text ? Kind::text : Kind::number;
    }
    if (argument.kind == Kind::number ? is_text || type == Type::result
        : argument.is_result()        ? type != Type::result && !(is_text && argument.kind == Kind::untouched)
                                      : !is_text) {
        throw "an argument is of a kind that the call's own type does not take";
    }
    if (argument.is_list != listed) {
        throw "the list is the last argument of a call with dots, and of no other";
    }
    const Range whole = whole_range(type);
    if (argument.kind == Kind::number && !argument.range.holds(argument.range.least)) {
        argument.range = whole;
    }
    if (argument.kind == Kind::number && argument.range.most - argument.range.least > whole.most - whole.least) {
        throw "a range is wider than the call's own type";
    }
    return argument;
}

// A call that sends its manager a message.
template <auto Function, std::size_t size>
consteval auto call(std::string_view name, const Argument (&arguments)[size], std::string_view example)
{
    using Bound = Binding<Function>;
    static_assert(size == Bound::types.size(), "a row names as many arguments as its call has");
    Draft<size> draft{};
    draft.row.name = name;
    draft.row.symbol = symbol_of<Function>();
    draft.row.example = example;
    draft.row.answers_record = Bound::answers_record;
    draft.row.make = Bound::make;
    for (std::size_t i = 0; i < size; i++) {
        const auto decides = [&](const Argument& other) { return other.name == arguments[i].decided_by; };
        if (!arguments[i].decided_by.empty() && std::none_of(arguments, arguments + i, decides)) {
            throw "what decides whether an argument is sent stands before it";
        }
        draft.arguments[i] = bound(arguments[i], Bound::types[i], Bound::has_list && i + 1 == size);
    }
    return draft;
}

// A call without arguments.
template <auto Function>
consteval auto call(std::string_view name) requires(Binding<Function>::types.empty())
{
    Draft<0> draft{};
    draft.row.name = name;
    draft.row.symbol = symbol_of<Function>();
    draft.row.make = Binding<Function>::make;
    return draft;
}

// A call that does nothing, kept by the library so that programs link.
template <auto Function, std::size_t size>
consteval auto stub(std::string_view name, const Argument (&arguments)[size], std::string_view example)
{
    return call<Function>(name, arguments, example).on(Channel::none).marked(does_nothing);
}

// A call that makes no sense on its own: what makes it.
template <auto Function>
consteval auto part(std::string_view name, std::string_view used_by)
{
    Draft<0> draft{};
    draft.row.name = name;
    draft.row.symbol = symbol_of<Function>();
    draft.row.channel = Channel::none;
    draft.row.used_by = used_by;
    return draft;
}

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
    for (const Row& each : all.rows) {
        if (!each.undone_by.empty() && std::ranges::find(all.rows, each.undone_by, &Row::name) == all.rows.end()) {
            throw "a call is undone by one that its family has not";
        }
    }
    return all;
}

// A family whose calls another header declares, with words of its own about it.
#define FAMILY_OF(header, stem, about, ...)                                                                            \
    namespace family {                                                                                                 \
    extern const Family stem;                                                                                          \
    static constexpr auto stem##_table = table(&stem, __VA_ARGS__);                                                    \
    constinit const Family stem{#stem, stem##_table.rows, stem##_table.arguments, header, about};                      \
    }

// A family, its header's name and file name being the same.
#define FAMILY(stem, ...) FAMILY_OF(#stem, stem, {}, __VA_ARGS__)

} // namespace vorcfg
