#include "client/commands.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <set>

#include <fmt/core.h>

#include "client/ask.hpp"
#include "client/line_options.hpp"
#include "record/json.hpp"
#include "record/stored.hpp"
#include "server/commands.hpp"
#include "server/options.hpp"
#include "text/file.hpp"
#include "text/json.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

using Arguments = std::vector<std::string>;

constexpr Handler handler_rows[] = {
    {"watch", "[--json] [--ids] [--color WHEN] [FILTER]...", "print messages as they arrive", watch, true},
    {"wait", "[OPTION]... LINE",
     "wait until a message was accepted that LINE describes as\n"
     "vorsim prints it; --count N, --status N, --next (from\n"
     "now on), --within T (500ms, 2m; default 10s)",
     wait, true},
    {"wait", "[OPTION]... --call NAME [--object O]", "the same for any values", wait, true},
    {"wait", "--ready [--within T]", "wait until the gateway answers", wait, true},
    {"expect", "[OPTION]... FILE|-",
     "check that exactly the messages in FILE, one a line,\n"
     "have arrived since the start or the last reset;\n"
     "--any-order, --subset (others may have, too),\n"
     "--allow-complaints, --within T, --json, --color WHEN",
     expect, true},
    {"expect", "--record FILE", "write the messages that have arrived to FILE", expect, true},
    {"run", "[OPTION]... [--] COMMAND [ARGUMENT]...",
     "run COMMAND against a gateway of its own; OPTIONs are\n"
     "the ones above and --expect FILE, with the options of\n"
     "expect, --timeout T, and --lines, which prints the\n"
     "gateway's lines on standard error",
     run_command, false},
    {"decode", "[--json] [--bytes] [--ids] [--color WHEN] [FILTER]... FILE", "print a journal", decode, false},
    {"replay", "[--state FILE] [--ignore-readings] [FILTER]... FILE",
     "send a journal's requests again, compare the answers", replay, false},
};

// The line, as the gateway reads it.
std::string line_of(const Arguments& arguments, bool raw)
{
    std::string line = arguments.front();
    for (std::size_t at = 1; at < arguments.size(); ++at) {
        line += ' ' + (raw ? arguments[at] : vor::typed(arguments[at]));
    }
    return line;
}

int pass_on(const server::CommandRow& row, const Arguments& arguments)
{
    std::optional<std::string> document;
    if (row.carries_document && arguments.size() > 1) {
        try {
            document = vor::joined(record::stored_lines(state_in(arguments[1])), "\n");
        } catch (const vor::JsonError& error) {
            throw std::runtime_error(fmt::format("{}: {}", arguments[1], error.what()));
        }
    }
    print(ask(line_of(arguments, row.raw), document));
    return 0;
}

[[noreturn]] void refuse_command(const std::string& name)
{
    std::set<std::string> names;
    for (const Handler& row : handler_rows) {
        names.emplace(row.name);
    }
    for (const server::CommandRow& row : server::command_rows()) {
        if (!row.about.empty()) {
            names.emplace(server::first_word(row.name));
        }
    }
    const std::vector<std::string> known(names.begin(), names.end());
    throw vor::UnknownArgument(
        fmt::format("unknown command {}{}", vor::quoted(name), vor::suggestion(vor::nearest(name, known))));
}

} // namespace

int watch(const Arguments& arguments)
{
    LineOptions options;
    Arguments line{"watch"};
    for (vor::Operands operands(arguments); !operands.empty();) {
        if (!operands.take_option(line_options, options)) {
            line.push_back(operands.take());
        }
    }
    if (options.json) {
        line.emplace_back("--json");
    }
    const record::LineStyle style = options.style();
    EventStream stream(line_of(line, false));
    while (stream.read([&](EventStream::Kind kind, std::string_view text) {
        if (kind == EventStream::Kind::note) {
            vor::print_line(stderr, text);
        } else if (options.json) {
            print(fmt::format("{}\n", text));
        } else {
            print(fmt::format("{}\n", record::shown(record::read_line(text.substr(text.find(' ') + 1)).record, style)));
        }
    })) {}
    return 0;
}

std::span<const Handler> handlers()
{
    return handler_rows;
}

vor::Json state_in(const std::string& file)
try {
    // On one line, or indented; the gateway's own limits are lower.
    const std::string text = vor::content_of(file, {.line = vor::Bounds().file});
    vor::Json state = vor::Json::parse(text, {.bytes = text.size(), .members = 1 << 16});
    const vor::Json* const schema = state.find("schema");
    if (schema == nullptr || *schema != vor::Json(1)) {
        throw vor::JsonError("not a state of schema 1");
    }
    return state;
} catch (const vor::FileError& error) {
    throw std::runtime_error(fmt::format("cannot read {}: {}", file, error.what()));
} catch (const vor::JsonError& error) {
    throw std::runtime_error(fmt::format("{}: {}", file, error.what()));
}

void print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw std::runtime_error(fmt::format("cannot write to standard output: {}", vor::reason_of(errno)));
    }
}

std::optional<int> run(const Arguments& arguments)
{
    if (arguments.empty()) {
        return {};
    }
    const auto* const own = std::ranges::find(handler_rows, arguments.front(), &Handler::name);
    if (own != std::end(handler_rows)) {
        return own->run({arguments.begin() + 1, arguments.end()});
    }
    const server::CommandRow* const row = server::command_named(arguments.front());
    if (row != nullptr && !row->about.empty()) {
        return pass_on(*row, arguments);
    }
    if (!arguments.front().starts_with("-")) {
        refuse_command(arguments.front());
    }
    return {};
}

} // namespace vorsim::client
