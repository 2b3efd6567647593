#include "help/help.hpp"

#include <algorithm>
#include <unistd.h>

#include <fmt/core.h>

#include "input/options.hpp"
#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/nearest.hpp"
#include "text/screen.hpp"
#include "text/text.hpp"

namespace vorcfg::help {

namespace {

constexpr std::string_view about_vorcfg = "vorcfg configures a gateway: one call, a batch of calls or a whole site";
constexpr std::string_view about_words = "Numbers are decimal or 0x. A secret is given as @FILE, - (a line of standard "
                                         "input) or '?' (a prompt); one left out "
                                         "on the command line is prompted for.";

// Lines that fit, all but the first indented.
std::string hanging(std::string_view text, std::size_t indent)
{
    const std::size_t width = help_width(STDOUT_FILENO);
    return vor::joined(vor::wrapped(text, width - std::min(indent, width / 2)), '\n' + std::string(indent, ' ')) + '\n';
}

std::string help_paragraph(std::string_view text, std::size_t indent = 0)
{
    return std::string(indent, ' ') + hanging(text, indent);
}

// Two columns, the second wrapped.
class Columns {
public:
    void add(std::string name, std::string about) { rows_.emplace_back(std::move(name), std::move(about)); }

    std::string text() const
    {
        std::size_t width = 0;
        for (const auto& [name, about] : rows_) {
            width = std::max(width, name.size());
        }
        const std::size_t second = 2 + width + 2;
        std::string text;
        for (const auto& [name, about] : rows_) {
            text += fmt::format("  {:<{}}  {}", name, width, hanging(about, second));
        }
        return text;
    }

private:
    std::vector<std::pair<std::string, std::string>> rows_;
};

std::string usage_text(const rows::Row& row)
{
    return hanging(fmt::format("usage: vorcfg {}", rows::usage_of(row)), 4);
}

std::string option_text(const input::OptionRow& row)
{
    return row.value.empty() ? std::string(row.name) : fmt::format("{} {}", row.name, row.value);
}

template <class Shown>
std::string options_text(Shown shown, bool with_commands = true)
{
    Columns columns;
    for (const input::OptionRow& row : input::option_rows()) {
        if (shown(row)) {
            columns.add(option_text(row), row.commands.empty() || !with_commands
                                              ? std::string(row.about)
                                              : fmt::format("{} ({})", row.about, row.commands));
        }
    }
    return columns.text();
}

// By group; between them an empty line, or nothing.
std::string commands_text(std::string_view between)
{
    std::string text;
    for (std::size_t group = 0; group < std::size(input::group_titles); group++) {
        Columns columns;
        for (const input::Command& command : input::commands()) {
            if (command.group == static_cast<input::CommandGroup>(group)) {
                columns.add(std::string(command.usage.empty() ? "(no arguments)" : command.usage),
                            std::string(command.about));
            }
        }
        text += fmt::format("{}{}:\n{}", between, input::group_titles[group], columns.text());
    }
    return text;
}

} // namespace

std::size_t help_width(int descriptor)
{
    constexpr std::size_t least = 20;
    constexpr std::size_t most = 80;
    return std::clamp(vor::screen_of(descriptor, vor::ColorWhen::never).width, least, most);
}

std::string help()
{
    std::string text = fmt::format(
        "{}.\n{}\nOptions:\n{}\nOptions of some commands:\n{}\n{}\nFamilies:\n", about_vorcfg, commands_text("\n"),
        options_text([](const input::OptionRow& row) { return row.commands.empty(); }),
        options_text([](const input::OptionRow& row) { return !row.commands.empty(); }), help_paragraph(about_words));
    Columns known;
    for (const rows::Family* const family : rows::families()) {
        known.add(std::string(family->name), rows::about(*family));
    }
    Columns exits;
    for (std::size_t code = 0; code < std::size(input::exit_texts); code++) {
        exits.add(fmt::format("{:>2}", code), std::string(input::exit_texts[code]));
    }
    return fmt::format("{}{}\nExit codes:\n{}", text, known.text(), exits.text());
}

std::string brief_help()
{
    return fmt::format("{}.\n{}Options; vorcfg --help lists all of them:\n{}", about_vorcfg, commands_text(""),
                       options_text([](const input::OptionRow& row) { return row.brief; }, false));
}

namespace {

std::string help_of(const input::Command& command, std::string_view more)
{
    const std::string options = options_text(
        [&command](const input::OptionRow& row) { return !row.commands.empty() && takes_option(row, command.name); },
        false);
    return fmt::format("usage: vorcfg {}{}\n{}{}{}{}", command.usage, options.empty() ? "" : " [OPTION]...",
                       help_paragraph(rows::sentence(std::string(command.about))),
                       more.empty() ? "" : '\n' + help_paragraph(more), options.empty() ? "" : "\nOptions:\n", options);
}

} // namespace

std::string brief_help(const input::Command& command)
{
    return help_of(command, "");
}

std::string help(const input::Command& command)
{
    std::vector<std::string_view> of_all;
    for (const input::OptionRow& row : input::option_rows()) {
        if (row.commands.empty()) {
            of_all.push_back(row.name);
        }
    }
    return fmt::format("{}\n{}", help_of(command, command.more),
                       help_paragraph(fmt::format("Every command takes {}; vorcfg --help describes them.",
                                                  vor::joined(of_all, ", "))));
}

std::string help(const rows::Family& family)
{
    Columns calls;
    for (const rows::Row& row : family.rows) {
        calls.add(std::string(row.name), rows::summary_of(row));
    }
    return fmt::format("usage: vorcfg {} CALL ARGUMENT...\n\n{}\n\n{}", family.name, rows::about(family), calls.text());
}

// The names alone, in as many columns as fit.
std::string brief_help(const rows::Family& family)
{
    std::size_t width = 0;
    for (const rows::Row& row : family.rows) {
        width = std::max(width, row.name.size() + 2);
    }
    const std::size_t columns = std::max<std::size_t>((help_width(STDOUT_FILENO) - 2) / width, 1);
    std::string text = fmt::format("usage: vorcfg {} CALL ARGUMENT...\n", family.name);
    for (std::size_t i = 0; i < family.rows.size(); i++) {
        const bool ends = i % columns == columns - 1 || i + 1 == family.rows.size();
        const std::size_t padded = ends ? 0 : width;
        text += fmt::format("{}{:<{}}{}", i % columns == 0 ? "  " : "", family.rows[i].name, padded, ends ? "\n" : "");
    }
    return text;
}

std::string help(const rows::Row& row)
{
    const rows::CallContract& contract = rows::contract_of(row);
    std::string text = usage_text(row) + '\n';
    if (row.read != nullptr) {
        text += help_paragraph(rows::sentence(rows::summary_of(row)));
    } else {
        for (const std::string& each : rows::told(contract.paragraphs)) {
            text += help_paragraph(each);
        }
    }
    if (!row.used_by.empty()) {
        return text + fmt::format("Not made on its own; used by {}\n", row.used_by);
    }
    for (const std::string_view remark : rows::remarks_of(row)) {
        text += help_paragraph(remark);
    }
    text += row.usage_help;
    for (const rows::Argument& argument : row.arguments()) {
        if (row.read != nullptr || !argument.is_given()) {
            continue;
        }
        const std::string_view meaning = contract.told(argument);
        const std::string example = argument.is_secret ? "" : rows::example_of(row, argument);
        text += fmt::format("\n  {}\n{}{}{}", argument.name, help_paragraph(rows::kind_text(argument), 6),
                            meaning.empty() ? "" : help_paragraph(meaning, 6),
                            example.empty() ? "" : help_paragraph(fmt::format("example: {}", example), 6));
    }
    const std::string returned = contract.told_return();
    text += '\n' + (row.read == nullptr ? help_paragraph(rows::default_meaning) : "");
    text += row.read == nullptr && !returned.empty() ? help_paragraph(returned) : "";
    text += row.channel != rows::Channel::none ? help_paragraph(rows::exits_of_a_call()) : "";
    return text + fmt::format("\nExample: vorcfg {}\n", rows::example_call(row));
}

std::string brief_help(const rows::Row& row)
{
    Columns arguments;
    for (const rows::Argument& argument : row.arguments()) {
        if (row.read == nullptr && argument.is_given()) {
            arguments.add(std::string(argument.name), rows::kind_text(argument));
        }
    }
    return fmt::format("{}{}\n{}{}", usage_text(row), rows::summary_of(row), row.usage_help, arguments.text());
}

std::string list(const rows::Family* only, bool json)
{
    std::string text;
    for (const rows::Family* const family : rows::families()) {
        if (only != nullptr && family != only) {
            continue;
        }
        for (const rows::Row& row : family->rows) {
            if (json) {
                text += output::json_of(row);
            } else {
                text += rows::usage_of(row);
                text += row.used_by.empty() ? "\n" : fmt::format(" (not on its own; used by {})\n", row.used_by);
            }
        }
    }
    return text;
}

} // namespace vorcfg::help
