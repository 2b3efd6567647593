// vorcfg-page HEADER: prints a reference page, docs/calls/HEADER.md, from the rows, the header, and the examples, which it
// makes on the running gateway: a developers' tool, not installed (scripts/reference-page runs it against vorsim).
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

constexpr std::string_view sample_secret = "Monsoon-17";

// Printing a page must not restart the gateway.
bool shown_dry(const Row& row)
{
    return row.has(confirmed);
}

// The example as a shell line: a secret comes from standard input.
std::string example_line(const Row& row)
{
    const bool secret = std::ranges::any_of(row.arguments(), &Argument::is_secret);
    return fmt::format("{}vorcfg {}{}", secret ? fmt::format("printf {} | ", sample_secret) : "",
                       shown_dry(row) ? "--dry-run " : "", example_call(row));
}

PreparedCall planned_example(const Row& row)
{
    std::vector<Word> words = words_of(example_call(row));
    for (Word& word : words) {
        if (!word.quoted && word.text == "-") {
            word = {{std::string(sample_secret), true}};
        }
    }
    Secrets secrets({.literals = true});
    return plan(words, secrets);
}

std::string messages_text(const Row& row)
{
    PreparedCall planned = planned_example(row);
    const CallResult report = Session({.capture = true}, std::nullopt).make(planned);
    std::string text;
    for (const Message& message : report.seen.messages) {
        text += described(message, row, planned.values) + '\n';
    }
    return text.empty() ? "" : fmt::format("Goes out as\n\n```text\n{}```\n\n", text);
}

// What the example prints. One that fails is a fault of the page.
std::string example_text(const Row& row, std::string& faults)
{
    PreparedCall planned = planned_example(row);
    const CallResult report = Session({.capture = shown_dry(row)}, std::nullopt).make(planned);
    const std::string text = text_of(planned, report);
    const Outcome outcome = report.verdict.outcome;
    if (exit_of(outcome) != exit_ok && !(outcome == Outcome::unread && row.has(answer_unread))) {
        faults += fmt::format("\n{}", std::string_view{text}.substr(0, text.size() - 1));
    }
    return fmt::format("```console\n$ {}\n{}```\n\n", example_line(row), text);
}

std::string arguments_text(const Row& row, const CallContract& contract)
{
    std::string text;
    for (const Argument& argument : row.arguments()) {
        text +=
            fmt::format("| `{}` | {} | {}{} |\n", argument.name, argument.is_count ? "counted" : type_name(argument),
                        contract.about(argument), argument.is_secret ? " (a secret: `@FILE`, `-` or `?`)" : "");
    }
    return text.empty() ? "" : fmt::format("| Argument | Type | |\n|---|---|---|\n{}\n", text);
}

std::string contract_text(const Row& row)
{
    if (row.read != nullptr) {
        return fmt::format("`vorcfg {}`\n\n{}\n\n```text\n{}```\n\n", usage_of(row), summary_of(row), row.usage_help);
    }
    const CallContract& contract = contract_of(row);
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

std::string row_text(const Row& row, std::string& faults)
{
    std::string text = fmt::format("## {}\n\n{}", row.full_name(), contract_text(row));
    if (!row.used_by.empty()) {
        return text + fmt::format("Not called on its own; what uses it: {}.\n\n", row.used_by);
    }
    return text + messages_text(row) + example_text(row, faults);
}

// Of all families that the header declares. Throws an InputError that names the examples that failed.
std::string page_of(std::string_view header)
{
    std::string text = fmt::format("# {}\n\n[How to read this page, and the common codes](README.md)\n\n", header);
    std::string rows;
    std::string faults;
    for (const Family* const family : families()) {
        if (family->header != header) {
            continue;
        }
        if (rows.empty()) {
            for (const std::string& paragraph : contract_of(*family).paragraphs) {
                text += paragraph + "\n\n";
            }
        }
        for (const Row& row : family->rows) {
            rows += row_text(row, faults);
        }
    }
    if (rows.empty()) {
        throw InputError{fmt::format("no header \"{}\" declares calls", header)};
    }
    if (!faults.empty()) {
        throw InputError{fmt::format("no page printed, these examples failed:{}", faults), exit_not_delivered};
    }
    text += rows;
    text.pop_back();
    return text;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (argc != 2) {
            throw InputError{"usage: vorcfg-page HEADER"};
        }
        vor::print(stdout, page_of(argv[1]));
        return exit_ok;
    } catch (const InputError& error) {
        vor::print_line(stderr, fmt::format("vorcfg-page: {}", error.text));
        return error.exit;
    }
}
