#include "help/help.hpp"

#include <algorithm>

#include <fmt/core.h>

#include "input/options.hpp"
#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/nearest.hpp"

namespace vorcfg {

namespace {

constexpr std::string_view about_vorcfg = "changes a gateway's settings, one call or one batch file at a time";
constexpr std::string_view about_words =
    "Numbers are decimal or 0x. A secret is given as @FILE, - (a line of standard\n"
    "input) or ? (a prompt); left out on the command line, it is asked for.\n";

constexpr std::size_t line_width = 100;

// Fills lines up, each begun with so many blanks.
std::string filled(std::string_view text, std::size_t indent)
{
    std::string out;
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (column != 0 && column + 1 + word.size() > line_width) {
            out += '\n';
            column = 0;
        }
        out += column == 0 ? std::string(indent, ' ') : " ";
        column = (column == 0 ? indent : column + 1) + word.size();
        out += word;
    }
    return out + '\n';
}

std::string option_text(const OptionRow& row)
{
    return row.value.empty() ? std::string(row.name) : fmt::format("{} {}", row.name, row.value);
}

bool holds(const Row& row, const std::string& word)
{
    const auto has = [&](std::string_view text) { return vor::folded(text).find(word) != std::string::npos; };
    const CallContract& contract = contract_of(row);
    return has(row.full_name()) || has(row.symbol) || std::ranges::any_of(contract.paragraphs, has) ||
           std::ranges::any_of(row.arguments(),
                               [&](const Argument& each) { return has(each.name) || has(contract.about(each)); });
}

template <class Wanted>
std::string listed(bool json, Wanted wanted)
{
    std::string text;
    for (const Family* const family : families()) {
        for (const Row& row : family->rows) {
            if (!wanted(row)) {
                continue;
            }
            if (json) {
                text += json_of(row);
            } else {
                text += usage_of(row);
                text += row.used_by.empty() ? "\n" : fmt::format(" (not on its own; used by: {})\n", row.used_by);
            }
        }
    }
    return text;
}

} // namespace

std::string help()
{
    std::string text = fmt::format("vorcfg {}.\n\n", about_vorcfg);
    for (const Command& command : commands()) {
        text += fmt::format("  vorcfg {:<26} {}\n", command.usage, command.about);
    }
    text += "\nFamilies:\n";
    for (const Family* const family : families()) {
        text += fmt::format("  {:<13}{}\n", family->name, about(*family));
    }
    text += "\nOptions:\n";
    for (const OptionRow& row : option_rows()) {
        text += fmt::format("  {:<22}{}\n", option_text(row), row.about);
    }
    text += fmt::format("\n{}\nExit codes:\n", about_words);
    for (std::size_t code = 0; code < std::size(exit_texts); code++) {
        text += fmt::format("  {:>2} {}\n", code, exit_texts[code]);
    }
    return text;
}

std::string help(const Command& command)
{
    return fmt::format("vorcfg {}: {}\n{}{}", command.usage, command.about, command.more.empty() ? "" : "\n",
                       command.more);
}

std::string help(const Family& family)
{
    std::string text = fmt::format("vorcfg {}: {}\n\n", family.name, about(family));
    std::size_t width = 0;
    for (const Row& row : family.rows) {
        width = std::max(width, row.name.size() + 2);
    }
    for (const Row& row : family.rows) {
        text += fmt::format("  {:<{}}{}\n", row.name, width, summary_of(row));
    }
    return text;
}

std::string help(const Row& row)
{
    const CallContract& contract = contract_of(row);
    std::string text = fmt::format("vorcfg {}\n\n", usage_of(row));
    if (row.read != nullptr) {
        text += filled(summary_of(row), 0);
    } else {
        for (const std::string& paragraph : contract.paragraphs) {
            text += filled(paragraph, 0);
        }
    }
    if (!row.used_by.empty()) {
        return text + fmt::format("Not called on its own; what uses it: {}\n", row.used_by);
    }
    for (const std::string_view remark : remarks_of(row)) {
        text += fmt::format("{}\n", remark);
    }
    text += row.usage_help;
    for (const Argument& argument : row.arguments()) {
        if (row.read != nullptr || !argument.is_given()) {
            continue;
        }
        text += fmt::format("\n  {}\n{}", argument.name, filled(kind_text(argument), 6));
        if (const std::string_view meaning = contract.about(argument); !meaning.empty()) {
            text += filled(meaning, 6);
        }
    }
    if (row.read == nullptr) {
        text += '\n' + filled(fmt::format("The library returns {}.", contract.returned), 0);
    }
    return text + fmt::format("\nExample: vorcfg {}\n", example_call(row));
}

std::string list(const Family* family, bool json)
{
    return listed(json, [&](const Row& row) { return family == nullptr || row.family == family; });
}

std::string search(std::string_view word, bool json)
{
    return listed(json, [wanted = vor::folded(word)](const Row& row) { return holds(row, wanted); });
}

} // namespace vorcfg
