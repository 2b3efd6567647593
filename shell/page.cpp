// vorcfg-page HEADER: prints a reference page, docs/calls/HEADER.md, from the rows, the header, and the examples, which
// it makes on the running gateway: a developers' tool, not installed (scripts/regenerate runs it through shell_test).
#include <algorithm>
#include <cstdio>
#include <string>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/text.hpp"

using namespace vorcfg;

namespace {

// Printing a page must not restart the gateway.
bool shown_dry(const rows::Row& row)
{
    return row.has(rows::confirmed);
}

// The example as a shell line: a secret comes from standard input.
std::string example_line(const rows::Row& row)
{
    const bool secret = std::ranges::any_of(row.arguments(), &rows::Argument::is_secret);
    return fmt::format("{}vorcfg {}{}", secret ? fmt::format("printf {} | ", call::sample_secret) : "",
                       shown_dry(row) ? "--dry-run " : "", rows::example_call(row));
}

std::string messages_text(const rows::Row& row)
{
    call::PreparedCall call = call::prepare_example(row);
    const call::CallResult result = call::Session({.capture = true}, std::nullopt).make(call);
    std::string text;
    for (const call::Message& message : result.seen.messages) {
        text += call::described(message, row, call.values) + '\n';
    }
    return text.empty() ? "" : fmt::format("Sent as\n\n```text\n{}```\n\n", text);
}

// What the example prints; notes it where it fails.
std::string example_text(const rows::Row& row, std::string& faults)
{
    call::PreparedCall call = call::prepare_example(row);
    const call::CallResult result = call::Session({.capture = shown_dry(row)}, std::nullopt).make(call);
    const std::string text = output::text_of(call, result);
    const call::Outcome outcome = result.verdict.outcome;
    if (call::exit_of(outcome) != input::exit_ok &&
        !(outcome == call::Outcome::unread && row.has(rows::answer_unread))) {
        faults += fmt::format("\n{}", std::string_view{text}.substr(0, text.size() - 1));
    }
    return fmt::format("```console\n$ {}\n{}```\n\n", example_line(row), text);
}

std::string arguments_text(const rows::Row& row, const rows::CallContract& contract)
{
    std::string text;
    for (const rows::Argument& argument : row.arguments()) {
        std::string meaning(contract.meaning(argument));
        meaning += argument.is_secret ? " (a secret: `@FILE`, `-` or `?`)" : "";
        text +=
            fmt::format("| `{}` | {} |{}{} |\n", argument.name,
                        argument.is_count ? "counted" : rows::type_name(argument), meaning.empty() ? "" : " ", meaning);
    }
    return text.empty() ? "" : fmt::format("| Argument | Type | |\n|---|---|---|\n{}\n", text);
}

std::string contract_text(const rows::Row& row)
{
    if (row.read != nullptr) {
        return fmt::format("`vorcfg {}`\n\n{}\n\n```text\n{}```\n\n", rows::usage_of(row),
                           rows::sentence(rows::summary_of(row)), row.usage_help);
    }
    const rows::CallContract& contract = rows::contract_of(row);
    std::string text = fmt::format("`{}`\n\n", contract.declaration);
    for (const std::string& paragraph : contract.paragraphs) {
        text += paragraph + "\n\n";
    }
    if (row.used_by.empty()) {
        text += arguments_text(row, contract);
        text += fmt::format("Returns {}.\n\n", contract.returned);
    }
    return text;
}

std::string row_text(const rows::Row& row, std::string& faults)
{
    std::string text = fmt::format("## {}\n\n{}", row.full_name(), contract_text(row));
    if (!row.used_by.empty()) {
        return text + fmt::format("Not made on its own; used by {}.\n\n", row.used_by);
    }
    return text + messages_text(row) + example_text(row, faults);
}

// Of all families that the header declares. Throws an InputError that names the examples that failed.
std::string page_of(std::string_view header)
{
    std::string text = fmt::format("# {}\n\n[How to read this page, and the common codes](README.md)\n\n", header);
    std::string rows;
    std::string faults;
    for (const rows::Family* const family : rows::families()) {
        if (family->header != header) {
            continue;
        }
        if (rows.empty()) {
            for (const std::string& paragraph : rows::contract_of(*family).paragraphs) {
                text += paragraph + "\n\n";
            }
        }
        for (const rows::Row& row : family->rows) {
            rows += row_text(row, faults);
        }
    }
    if (rows.empty()) {
        throw input::InputError{fmt::format("no header \"{}\" declares calls", header)};
    }
    if (!faults.empty()) {
        throw input::InputError{fmt::format("no page printed, these examples failed:{}", faults),
                                input::exit_not_delivered};
    }
    text += fmt::format("{}\n\n{}", rows::default_meaning, rows);
    text.pop_back();
    return text;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (argc != 2) {
            throw input::InputError{"usage: vorcfg-page HEADER"};
        }
        vor::print(stdout, page_of(argv[1]));
        return input::exit_ok;
    } catch (const input::InputError& error) {
        vor::print_line(stderr, fmt::format("vorcfg-page: {}", error.text));
        return error.exit;
    }
}
