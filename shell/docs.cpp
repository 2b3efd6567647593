#include "docs.hpp"

#include "batch.hpp"
#include "commands.hpp"
#include "complaint.hpp"
#include "header.hpp"
#include "help.hpp"
#include "konfd_query.hpp"
#include "report.hpp"
#include "session.hpp"

namespace vorcfg {

static constexpr std::string_view sample_secret = "Monsoon-17";

static bool shown_dry(const Row& row)
{
    return (row.marks & confirm) != 0; // a page that is tried out restarts nothing
}

// The example as a shell line: a secret comes from standard input.
static std::string example_line(const Row& row)
{
    std::string line = std::string("vorcfg ") + (shown_dry(row) ? "--dry-run " : "") + call_name(row);
    if (!row.example.empty()) {
        line += ' ' + std::string(row.example);
    }
    for (const Argument& argument : arguments_of(row)) {
        if (argument.secret) {
            return "printf " + std::string(sample_secret) + " | " + line;
        }
    }
    return line;
}

static Planned planned_example(const Row& row)
{
    std::vector<Token> tokens = tokens_of(row.example);
    for (Token& token : tokens) {
        if (!token.quoted && token.text == "-") {
            token = {std::string(sample_secret), true, 0};
        }
    }
    SecretSources sources;
    sources.literals = true;
    return plan(row, tokens, sources);
}

static std::string messages_text(const Row& row)
{
    Planned planned = planned_example(row);
    const Report report = Session({true, false}, std::nullopt).run(planned);
    std::string text;
    for (const Message& message : report.seen.messages) {
        text += described(message, planned.values) + '\n';
    }
    return text;
}

static std::string output_text(const Row& row)
{
    Planned planned = planned_example(row);
    return text_of(planned, Session({shown_dry(row), false}, std::nullopt).run(planned));
}

static std::string arguments_text(const Row& row, const DocumentedCall& call)
{
    std::string text;
    for (const Argument& argument : arguments_of(row)) {
        text += "| `" + std::string(argument.name) + "` | ";
        text += argument.counted ? "counted" : kind_of(argument);
        text += " | " + std::string(call.about(argument.list ? "..." : argument.name));
        text += argument.secret ? " (a secret: `@FILE`, `-` or `?`)" : "";
        text += " |\n";
    }
    return text.empty() ? "" : "| Argument | Type | |\n|---|---|---|\n" + text + '\n';
}

static std::string row_text(const Row& row, const DocumentedCall* call)
{
    std::string text = "## " + call_name(row) + "\n\n";
    if (call != nullptr) {
        text += "`" + call->declaration + "`\n\n";
        for (const std::string& paragraph : call->paragraphs) {
            text += paragraph + "\n\n";
        }
    } else {
        text += '`' + usage(row) + "`\n\n" + std::string(row.summary) + "\n\n```text\n" + std::string(query_options) +
                "```\n\n";
    }
    if (!row.covered_by.empty()) {
        return text + "Not called on its own; what uses it: " + std::string(row.covered_by) + ".\n\n";
    }
    if (call != nullptr) {
        text += arguments_text(row, *call);
        text += "Returns " + (call->returned.empty() ? "the common codes" : call->returned) + ".\n\n";
    }
    if (const std::string messages = messages_text(row); !messages.empty()) {
        text += "Goes out as\n\n```text\n" + messages + "```\n\n";
    }
    return text + "```console\n$ " + example_line(row) + '\n' + output_text(row) + "```\n\n";
}

std::string page(const std::string& stem, const std::filesystem::path& include_directory)
{
    const Header header = read_header(include_directory / "device_mgmt" / (stem + ".h"));
    std::string text = "# " + stem + "\n\n[How to read this page, and the common codes](README.md)\n\n";
    for (const std::string& paragraph : header.paragraphs) {
        text += paragraph + "\n\n";
    }
    for (const Family& family : families()) {
        if (family.header != stem) {
            continue;
        }
        for (const Row& row : family.rows()) {
            const DocumentedCall* const call = header.call(row.symbol);
            if (call == nullptr) {
                throw Complaint(std::string(row.symbol) + " is not in " + stem + ".h");
            }
            text += row_text(row, call);
        }
        if (family.name == query_row.family) {
            text += row_text(query_row, nullptr);
        }
    }
    text.pop_back();
    return text;
}

} // namespace vorcfg
