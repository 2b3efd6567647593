// konfd_query.hpp: `konfd query`, several calls of the library in one: builds a query, sends it and releases it.
#pragma once

#include "rows/family.hpp"

namespace vorcfg::rows::konfd_query {

inline constexpr Choice operations[] = {{"set", 1}, {"check", 2, true}, {"unset", 3}};

void read(Reading& reading);
Returned make(const Row& row, std::span<Value> values);

// The arguments in the order of their values.
inline constexpr Argument arguments[] = {
    number("operation").between(1, 3).choices_of(operations),
    text("line_key").optional(),
    text("line_value").optional(),
    text("pattern_key").object(),
    text("pattern_value").optional().object(),
    decimal<vor_int32>("priority").optional(),
    text("path").list(most_listed).object(), // key and value in turn
};

consteval auto row(std::string_view name, std::string_view example)
{
    constexpr std::size_t size = std::size(arguments);
    Draft<size> draft{};
    draft.row = {
        .name = name,
        .symbol = "vor_konfd_bi_dir_comm",
        .example = example,
        .channel = Channel::konfd,
        .make = make,
        .read = read,
        .usage = "--set|--check|--unset --line KEY VALUE --pattern KEY [VALUE] [--path KEY VALUE]... [--priority N]",
        .usage_help = "  --set, --check, --unset  store, check for or remove the line\n"
                      "  --line KEY VALUE         the line \"KEY VALUE\"; not with --unset\n"
                      "  --pattern KEY [VALUE]    match the lines ^KEY VALUE$, or ^KEY$\n"
                      "  --path KEY VALUE         one step down to the line's place, outermost first\n"
                      "  --priority N             the line's place among others\n",
    };
    for (std::size_t i = 0; i < size; i++) {
        draft.arguments[i] =
            bound(arguments[i], arguments[i].kind == Kind::number ? Type::uint8 : Type::text, i + 1 == size);
    }
    return draft;
}

} // namespace vorcfg::rows::konfd_query
