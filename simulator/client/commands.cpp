#include "client/commands.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include <fmt/core.h>

#include "client/ask.hpp"
#include "record/filter.hpp"
#include "server/commands.hpp"
#include "server/options.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

using Arguments = std::vector<std::string>;

// What is done without a gateway, or with any.
struct Handler {
    std::string_view name;
    std::string_view operands;
    std::string_view about;
    int (*run)(const Arguments& arguments);
};

constexpr Handler handlers[] = {
    {"decode", "[--json] [--bytes] [FILTER]... FILE", "print a journal", decode},
    {"replay", "[--state FILE] FILE", "send a journal's requests again and compare", replay},
};

// The line, as the gateway reads it.
std::string line_of(const Arguments& arguments, bool sentence)
{
    std::string line = arguments.front();
    for (std::size_t at = 1; at < arguments.size(); ++at) {
        line += ' ' + (sentence ? arguments[at] : vor::typed(arguments[at]));
    }
    return line;
}

int pass_on(const CommandRow& row, const Arguments& arguments)
{
    const std::string line = line_of(arguments, row.sentence);
    if (row.carries == CommandRow::Carries::stream) {
        EventStream watch(line);
        while (watch.read([](EventStream::What what, std::string_view text) {
            if (what == EventStream::What::message) {
                print(fmt::format("{}\n", text));
            } else {
                vor::print_line(stderr, text);
            }
        })) {}
        return 0;
    }
    const bool carries = row.carries == CommandRow::Carries::document && arguments.size() > 1;
    print(ask(line, carries ? contents(arguments[1]) : std::nullopt));
    return 0;
}

} // namespace

std::optional<std::string> contents(const std::string& path)
{
    const std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return file && text ? std::optional(text.str()) : std::nullopt;
}

void print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw std::runtime_error(fmt::format("cannot write to standard output: {}", std::strerror(errno)));
    }
}

std::string help()
{
    const auto told = [](const auto& row) {
        return fmt::format("       vorsim {}{}{}\n           {}\n", row.name, row.operands.empty() ? "" : " ",
                           row.operands, row.about);
    };
    std::string text;
    for (const CommandRow& row : command_rows()) {
        text += row.about.empty() ? "" : told(row);
    }
    for (const Handler& row : handlers) {
        text += told(row);
    }
    return text + fmt::format("FILTER is one of {}\n", filter_help());
}

std::optional<int> run(const Arguments& arguments)
{
    if (arguments.empty()) {
        return {};
    }
    const auto* const own = std::ranges::find(handlers, arguments.front(), &Handler::name);
    if (own != std::end(handlers)) {
        return own->run({arguments.begin() + 1, arguments.end()});
    }
    const CommandRow* const row = command_named(arguments.front());
    return row != nullptr && !row->about.empty() ? std::optional(pass_on(*row, arguments)) : std::nullopt;
}

} // namespace vorsim::client
