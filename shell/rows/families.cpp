#include "rows/families.hpp"

#include <algorithm>
#include <vector>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "input/options.hpp"
#include "input/words.hpp"
#include "text/nearest.hpp"
#include "text/text.hpp"

#include "family_list.hpp" // of the files in families/, by the build

namespace vorcfg::rows {

std::span<const Family* const> families()
{
    return family::all;
}

std::span<const Argument> Row::arguments() const
{
    return family->arguments.subspan(first_argument, argument_count);
}

bool Row::is_setting() const
{
    return channel != Channel::none && !has(does_nothing) && !answers_record &&
           std::ranges::none_of(arguments(), &Argument::is_result);
}

std::string Row::full_name() const
{
    return fmt::format("{} {}", family->name, name);
}

std::string Row::setting_name() const
{
    if (channel == Channel::konfd) {
        return "konfd line";
    }
    return setting.empty() ? full_name() : fmt::format("{} {}", family->name, setting);
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

namespace {

// The known names like this one, else the names of calls that contain it.
std::vector<std::string> similar(std::string_view name, const std::vector<std::string>& known,
                                 const std::vector<std::string>& calls)
{
    std::vector<std::string> near = vor::nearest(name, known);
    return near.empty() ? vor::holding(name, calls) : near;
}

} // namespace

const Family& require_family(std::string_view name, Expected expected)
{
    if (const Family* const family = family_named(name)) {
        return *family;
    }
    const bool or_command = expected == Expected::command_or_family;
    if (name == input::gateway_word) {
        throw input::InputError{.text = fmt::format("no {} \"{}\"", or_command ? "command or family" : "family", name),
                                .word = 0,
                                .hint = "a file of calls may begin with this line; see vorcfg manual vorcfg-batch"};
    }
    std::vector<std::string> known;
    for (const input::Command& command : input::commands()) {
        if (or_command && !command.name.empty()) {
            known.emplace_back(command.name);
        }
    }
    std::ranges::sort(known);
    std::vector<std::string> calls;
    for (const Family* const family : families()) {
        known.emplace_back(family->name);
        for (const Row& row : family->rows) {
            calls.push_back(row.full_name());
        }
    }
    const std::vector<std::string> near = similar(name, known, calls);
    throw input::InputError{.text = fmt::format("no {} {}{}", or_command ? "command or family" : "family",
                                                vor::quoted(name), vor::suggestion(near)),
                            .word = 0,
                            .hint = near.empty() ? "vorcfg --help lists them" : ""};
}

const Row& require_row(std::string_view family, std::string_view name, Expected expected)
{
    const Family& known = require_family(family, expected);
    if (const Row* const row = row_named(family, name)) {
        return *row;
    }
    std::vector<std::string> names;
    for (const Row& row : known.rows) {
        names.emplace_back(row.name);
    }
    const std::vector<std::string> near = similar(name, names, names);
    throw input::InputError{.text =
                                fmt::format("{} has no call {}{}", family, vor::quoted(name), vor::suggestion(near)),
                            .word = 1,
                            .hint = near.empty() ? fmt::format("vorcfg help {} lists its calls", family) : ""};
}

} // namespace vorcfg::rows
