#include "help.hpp"

#include "json.hpp"
#include "konfd_query.hpp"
#include "options.hpp"
#include "plan.hpp"
#include "report.hpp"

namespace vorcfg {

static std::string padded(std::string_view text, std::size_t width)
{
    std::string out(text);
    out.resize(std::max(width, text.size() + 1), ' ');
    return out;
}

std::string help()
{
    std::string text = "vorcfg changes a gateway's settings, one call or one batch file at a time.\n"
                       "\n"
                       "  vorcfg FAMILY CALL ARGUMENT...   make a call\n"
                       "  vorcfg batch FILE                make every call of a file; - is standard input\n"
                       "  vorcfg list                      show every call\n"
                       "  vorcfg FAMILY [CALL] --help      show a family's calls, a call's arguments\n"
                       "  vorcfg docs FAMILY INCLUDE_DIR   print a family's reference page\n"
                       "\nFamilies:\n";
    for (const Family& family : families()) {
        text += "  " + padded(family.name, 13) + std::string(family.about) + '\n';
    }
    text += "\nOptions:\n";
    for (const OptionRow& row : option_rows()) {
        text += "  " + padded(std::string(row.name) + (row.value.empty() ? "" : " " + std::string(row.value)), 22) +
                std::string(row.about) + '\n';
    }
    text += "\nNumbers are decimal or 0x. A secret is given as @FILE, - (a line of standard\n"
            "input) or ? (a prompt); left out, it is asked for.\n"
            "\nExit codes:\n"
            "  0 accepted, sent one-way, or done    5 delivered, the verdict cannot be read\n"
            "  1 refused by the manager             6 unknown: no answer in time\n"
            "  2 bad usage or argument              7 no endpoint, platform unusable\n"
            "  3 not delivered                      8 a file or secret cannot be read\n"
            "  4 nothing was sent                   9 a call contradicts what was seen\n"
            "                                      10 output cannot be written\n";
    return text;
}

std::string usage(const Row& row)
{
    std::string text = "vorcfg " + call_name(row);
    if (is_query(row)) {
        return text + " --set|--check|--unset --line KEY VALUE --pattern KEY [VALUE] [--path KEY VALUE]... "
                      "[--priority N]";
    }
    for (const Argument& argument : arguments_of(row)) {
        if (!argument.output && !argument.counted) {
            text += argument.list ? " [" + std::string(argument.name) + "...]" : " " + std::string(argument.name);
        }
    }
    return text;
}

std::string help(const Family& family)
{
    std::string text = "vorcfg " + std::string(family.name) + ": " + std::string(family.about) + "\n\n";
    std::size_t width = 0;
    for (const Row& row : family.rows()) {
        width = std::max(width, row.name.size() + 2);
    }
    for (const Row& row : family.rows()) {
        text += "  " + padded(row.name, width) + std::string(row.summary) + '\n';
    }
    if (family.name == query_row.family) {
        text += "  " + padded(query_row.name, width) + std::string(query_row.summary) + '\n';
    }
    return text;
}

static std::string kind_text(const Argument& argument)
{
    if (argument.list) {
        return std::string(argument.address ? "IPv4 addresses" : "texts") + ", as many as the call takes";
    }
    std::string text(argument.bits != 0 ? "number" : kind_of(argument));
    if (argument.type != Type::text || argument.bits != 0) {
        const Range range = range_of(argument);
        text += ", " + std::to_string(range.least) + " to " + std::to_string(range.most);
    }
    text += argument.secret ? "; a secret: @FILE, - or ?" : "";
    text += argument.unsent ? "; accepted, never sent" : "";
    return text;
}

std::string help(const Row& row)
{
    std::string text = usage(row) + "\n\n" + std::string(row.summary) + '\n';
    if (!row.covered_by.empty()) {
        return text + "Not called on its own; what uses it: " + std::string(row.covered_by) + '\n';
    }
    text += (row.marks & does_nothing) != 0 ? "The call stays so that programs link.\n" : "";
    text +=
        (row.marks & answer_unread) != 0 ? "The call never reads the manager's answer: no verdict can be had.\n" : "";
    text += (row.marks & confirm) != 0 ? "Wants --yes.\n" : "";
    if (is_query(row)) {
        text += query_options;
    }
    for (const Argument& argument : arguments_of(row)) {
        if (!argument.output && !argument.counted) {
            text += "  " + padded(argument.name, 22) + kind_text(argument) + '\n';
        }
    }
    return text + "\nExample: vorcfg " + call_name(row) + (row.example.empty() ? "" : " ") + std::string(row.example) +
           '\n';
}

static std::string list_line(const Row& row, bool json)
{
    if (json) {
        JsonObject object;
        object.text("family", row.family).text("name", row.name).text("symbol", row.symbol);
        std::vector<std::string> arguments;
        for (const Argument& argument : arguments_of(row)) {
            arguments.push_back(JsonObject()
                                    .text("name", argument.name)
                                    .text("type", kind_of(argument))
                                    .boolean("secret", argument.secret)
                                    .boolean("sent", !argument.unsent && !argument.output)
                                    .str());
        }
        object.list("arguments", arguments).text("summary", row.summary).boolean("callable", row.call != nullptr);
        if (!row.covered_by.empty()) {
            object.text("used_by", row.covered_by);
        }
        return object.str() + '\n';
    }
    std::string text = usage(row).substr(sizeof "vorcfg");
    return text + (row.covered_by.empty() ? "" : " (not on its own; used by: " + std::string(row.covered_by) + ')') +
           '\n';
}

std::string list(bool json)
{
    std::string text;
    for (const Family& family : families()) {
        for (const Row& row : family.rows()) {
            text += list_line(row, json);
        }
        if (family.name == query_row.family) {
            text += list_line(query_row, json);
        }
    }
    return text;
}

} // namespace vorcfg
