#include "help/help.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <utility>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "input/options.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/nearest.hpp"

#include "manual_texts.hpp" // of the pages, by the build

namespace vorcfg::help {

namespace {

std::string replaced(std::string text, std::string_view from, std::string_view to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// As plain text: a line that begins with a dot or a quote would be a request.
std::string escaped(std::string_view text)
{
    std::string out = fmt::format("\n{}", text);
    for (const auto& [from, to] : {std::pair{"\\", "\\e"}, {"-", "\\-"}, {"\n.", "\n\\&."}, {"\n'", "\n\\&'"}}) {
        out = replaced(std::move(out), from, to);
    }
    return out.substr(1);
}

// All as one argument of a macro: a single word could be the name of a macro.
std::string argument(std::string_view text)
{
    return fmt::format("\"\\&{}\"", replaced(escaped(text), "\"", "\"\""));
}

// Filled lines; each sentence begins a new one.
std::string filled(std::string_view text)
{
    std::string out;
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(" \n"), text.size());
        const std::string word = escaped(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (word.empty()) {
            continue;
        }
        if (column != 0) {
            const bool ends = column + 1 + word.size() > 78;
            out += ends ? '\n' : ' ';
            column = ends ? 0 : column + 1;
        }
        out += word;
        column += word.size();
        const std::size_t last = word.find_last_not_of("\")'");
        if (last != std::string::npos && last != 0 && std::string_view(".?!").find(word[last]) != std::string::npos) {
            out += '\n';
            column = 0;
        }
    }
    return column == 0 ? out : out + '\n';
}

std::string paragraph(std::string_view text)
{
    return ".Pp\n" + filled(text);
}

std::string literal(std::string_view lines)
{
    return fmt::format(".Bd -literal -offset indent\n{}{}.Ed\n", escaped(lines), lines.ends_with('\n') ? "" : "\n");
}

// An item of a list, as a sentence.
std::string item(std::string_view tag, std::string_view text)
{
    return fmt::format(".It {}\n{}", tag, filled(rows::sentence(std::string(text))));
}

// The day of SOURCE_DATE_EPOCH, else today.
std::string day()
{
    const char* const given = std::getenv("SOURCE_DATE_EPOCH");
    const std::time_t when =
        given != nullptr ? static_cast<std::time_t>(std::strtoll(given, nullptr, 10)) : std::time(nullptr);
    std::tm parts{};
    gmtime_r(&when, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%B %-d, %Y", &parts)};
}

// "Cm batch Ar FILE"
std::string usage_macros(std::string_view name, std::string_view usage)
{
    std::string macros = name.empty() ? "" : "Cm " + escaped(name);
    const std::string_view operands = usage.substr(std::min(name.empty() ? 0 : name.size() + 1, usage.size()));
    if (!operands.empty()) {
        macros += fmt::format("{}Ar {}", macros.empty() ? "" : " ", argument(operands));
    }
    return macros;
}

// The texts that replace @SYNOPSIS@ and the like in a page.
std::vector<std::pair<std::string_view, std::string>> fillings()
{
    std::string synopsis;
    std::string listed;
    for (const input::Command& command : input::commands()) {
        const std::string macros = usage_macros(command.name, command.usage);
        synopsis += ".Nm\n.Op Ar OPTION ...\n";
        if (!macros.empty()) {
            synopsis += fmt::format(".{}\n", macros);
            listed += item(macros, command.about) + filled(command.more);
        }
    }
    std::string options;
    for (const input::OptionRow& row : input::option_rows()) {
        const std::string value = row.value.empty() ? "" : " Ar " + argument(row.value);
        options += item(fmt::format("Fl {}{}", escaped(row.name.substr(1)), value),
                        fmt::format("{}{}{}", row.about, row.commands.empty() ? "" : "; for ", row.commands));
    }
    std::string known;
    for (const rows::Family* const family : rows::families()) {
        known += item(family->name, rows::about(*family));
    }
    std::string exits;
    for (std::size_t code = 0; code < std::size(input::exit_texts); code++) {
        exits += item(std::to_string(code), input::exit_texts[code]);
    }
    return {{"@DATE@", day()},        {"@SYNOPSIS@\n", synopsis}, {"@COMMANDS@\n", listed},
            {"@OPTIONS@\n", options}, {"@FAMILIES@\n", known},    {"@EXIT_STATUS@\n", exits}};
}

// The text of the header without the name of the file before it.
std::string without_file(std::string text)
{
    const std::size_t name = text.find(".h: ");
    if (name != std::string::npos && name < text.find(' ')) {
        text.erase(0, name + 4);
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    }
    return text;
}

std::string arguments_of(const rows::Row& row, const rows::CallContract& contract)
{
    std::string items;
    for (const rows::Argument& each : row.arguments()) {
        if (each.is_given()) {
            const std::string_view meaning = contract.told(each);
            items += item(fmt::format("Ar {}", each.name), rows::kind_text(each));
            items += filled(rows::sentence(std::string(meaning)));
        }
    }
    return items.empty() ? "" : fmt::format(".Bl -tag -width Ds\n{}.El\n", items);
}

std::string section_of(const rows::Row& row)
{
    const rows::CallContract& contract = rows::contract_of(row);
    std::string text = fmt::format(".Ss {}\n", escaped(row.full_name()));
    if (row.read != nullptr) {
        text += filled(rows::sentence(rows::summary_of(row))) + literal(row.usage_help);
    } else {
        text += literal(contract.declaration);
        for (const std::string& each : rows::told(contract.paragraphs)) {
            text += paragraph(each);
        }
    }
    if (!row.used_by.empty()) {
        return text + paragraph(fmt::format("Not made on its own; used by {}.", row.used_by));
    }
    for (const std::string_view remark : rows::remarks_of(row)) {
        text += paragraph(remark);
    }
    if (row.read == nullptr) {
        const std::string returned = contract.told_return();
        text += arguments_of(row, contract) + (returned.empty() ? "" : paragraph(returned));
    }
    return text + literal(fmt::format("vorcfg {}", rows::example_call(row)));
}

std::string page_of(const rows::Family& family)
{
    std::string title = fmt::format("vorcfg-{}", family.name);
    std::string text = fmt::format(".Nm {}\n.Nd {}\n.Sh SYNOPSIS\n", title, escaped(rows::about(family)));
    for (const rows::Row& row : family.rows) {
        if (row.used_by.empty()) {
            text += fmt::format(".Nm vorcfg\n.{}\n", usage_macros(row.full_name(), rows::usage_of(row)));
        }
    }
    std::string description;
    for (const std::string& each : rows::told(rows::contract_of(family).paragraphs)) {
        description += description.empty() ? filled(without_file(each)) : paragraph(without_file(each));
    }
    text += ".Sh DESCRIPTION\n" + description + paragraph(rows::default_meaning);
    for (const rows::Row& row : family.rows) {
        text += section_of(row);
    }
    std::ranges::transform(title, title.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return fmt::format(
        ".Dd {}\n.Dt {} 1\n.Os\n.Sh NAME\n{}.Sh EXIT STATUS\n{}.Sh SEE ALSO\n.Xr vorcfg 1 ,\n.Xr vorcfg-batch 5\n",
        day(), title, text, filled(rows::exits_of_a_call()));
}

} // namespace

std::vector<std::string> manual_pages()
{
    std::vector<std::string> pages;
    for (const vor::BuiltIn& page : manual_texts) {
        pages.emplace_back(page.stem);
    }
    for (const rows::Family* const family : rows::families()) {
        pages.push_back(fmt::format("vorcfg-{}.1", family->name));
    }
    return pages;
}

std::string manual(std::string_view page)
{
    const auto is_named = [page](std::string_view name) { // with its section, or without; a family by its name alone
        const std::string_view stem = name.substr(0, name.rfind('.'));
        return page == name || page == stem || fmt::format("vorcfg-{}", page) == stem;
    };
    for (const vor::BuiltIn& each : manual_texts) {
        if (is_named(each.stem)) {
            std::string text(each.text);
            for (const auto& [marker, filling] : fillings()) {
                text = replaced(text, marker, filling);
            }
            return text;
        }
    }
    for (const rows::Family* const family : rows::families()) {
        if (is_named(fmt::format("vorcfg-{}.1", family->name))) {
            return page_of(*family);
        }
    }
    throw input::InputError{
        fmt::format("no manual page \"{}\"{}", page,
                    vor::suggestion(vor::nearest(page, manual_pages()), "vorcfg manual lists them"))};
}

} // namespace vorcfg::help
