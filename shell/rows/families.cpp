#include "rows/families.hpp"

#include <algorithm>
#include <vector>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "input/options.hpp"
#include "text/nearest.hpp"

#include "family_list.hpp" // of the files in families/, by the build

namespace vorcfg {

std::span<const Family* const> families()
{
    return family::all;
}

std::span<const Argument> Row::arguments() const
{
    return family->arguments.subspan(first_argument, argument_count);
}

bool Row::undoes(const Row& other) const
{
    return family == other.family && (undone_by == other.name || other.undone_by == name);
}

std::string Row::full_name() const
{
    return fmt::format("{} {}", family->name, name);
}

const Family* family_named(std::string_view name)
{
    const auto found = std::ranges::find(family::all, name, [](const Family* each) { return each->name; });
    return found != std::end(family::all) ? *found : nullptr;
}

const Row* row_named(std::string_view family, std::string_view name)
{
    const Family* const known = family_named(family);
    if (known == nullptr) {
        return nullptr;
    }
    const auto found = std::ranges::find(known->rows, name, &Row::name);
    return found != known->rows.end() ? &*found : nullptr;
}

// A word that names no family may be a command, a family, or a part of a call's name.
const Family& wanted_family(std::string_view name)
{
    if (const Family* const family = family_named(name)) {
        return *family;
    }
    std::vector<std::string> known;
    for (const Command& command : commands()) {
        known.emplace_back(command.name);
    }
    std::erase(known, "");
    std::ranges::sort(known);
    std::vector<std::string> calls;
    for (const Family* const family : families()) {
        known.emplace_back(family->name);
        for (const Row& row : family->rows) {
            calls.push_back(row.full_name());
        }
    }
    std::vector<std::string> near = vor::nearest(name, known);
    if (near.empty()) {
        near = vor::holding(name, calls);
    }
    throw InputError{.text = fmt::format("no family \"{}\"{}", name, vor::suggestion(near, "vorcfg --help lists them")),
                     .word = 0};
}

const Row& wanted_row(std::string_view family, std::string_view name)
{
    const Family& known = wanted_family(family);
    if (const Row* const row = row_named(family, name)) {
        return *row;
    }
    std::vector<std::string> names;
    for (const Row& row : known.rows) {
        names.emplace_back(row.name);
    }
    std::vector<std::string> near = vor::nearest(name, names);
    if (near.empty()) {
        near = vor::holding(name, names);
    }
    throw InputError{.text = fmt::format("{} has no call \"{}\"{}", family, name,
                                         vor::suggestion(near, fmt::format("vorcfg {} --help lists them", family))),
                     .word = 1};
}

} // namespace vorcfg
