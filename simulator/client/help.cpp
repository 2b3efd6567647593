#include <algorithm>
#include <utility>

#include <fmt/core.h>

#include "client/commands.hpp"
#include "server/commands.hpp"
#include "server/options.hpp"

namespace vorsim::client {
namespace {

constexpr char usage[] =
    R"(usage: vorsim [OPTION]...             simulate the gateway: managers and konfd
       vorsim COMMAND [ARGUMENT]...   look at a running gateway, or control it
)";

constexpr char filters[] =
    R"(  FILTER is --manager NAME|SAP, --call NAME, --object TEXT, --source SAP or
    --complaints (only what --strict reports)
)";

constexpr char rest[] = R"(
Environment:
  VORINFRA_DIR      directory of the gateway's sockets (absolute, mode 0700);
                    default $XDG_RUNTIME_DIR/vorinfra, else /tmp/vorinfra-UID
  VORINFRA_ROOT     konfd listens at $VORINFRA_ROOT/tmp/konfd.socket; by default
                    at /tmp/konfd.socket, unless another process does
  VORINFRA_TIMEOUT_MS
                    how long a real manager (--via) may take; default 3000
  TMPDIR            where run makes its directory; default /tmp
  NO_COLOR          do not colour the output

The gateway accepts messages once it has printed "vorsim: ready, ...". SIGTERM
and SIGINT stop it.

Exit status:
  0  stopped, or the command succeeded
  1  the command failed, a check or a replay found differences, or the journal
     could not be written
  2  invalid usage, rule or environment, or the gateway could not start
  3  --strict: a message was refused, invalid, malformed or foreign, or a real
     manager did not answer
  4  no gateway is running in the directory

vorsim run exits as COMMAND did, or with 1 if only the check failed, 124 after a
timeout, 125 if the gateway could not start, 126 or 127 if COMMAND could not be
run, and 128+N if signal N ended it.
)";

// The name that each group begins with.
constexpr std::pair<std::string_view, std::string_view> headings[] = {
    {"--sap", "Gateway"}, {"--journal", "Output"},  {"--http", "Page"}, {"--help", "Other"},    {"show", "Look"},
    {"wait", "Check"},    {"fault add", "Control"}, {"run", "Tests"},   {"decode", "Journals"},
};

constexpr std::size_t about_at = 26;

void add_row(std::string& text, std::string_view name, std::string_view operands, std::string_view about)
{
    const auto* const heading =
        std::ranges::find(headings, name, &std::pair<std::string_view, std::string_view>::first);
    const std::string above = heading != std::end(headings) ? fmt::format("\n{}:\n", heading->second) : "";
    if (text.find(above) == text.npos) { // a name has a row for each of its forms
        text += above;
    }
    const std::string left = fmt::format("  {}{}{}", name, operands.empty() ? "" : " ", operands);
    const std::string indent(about_at, ' ');
    text += left.size() + 2 > about_at ? fmt::format("{}\n{}", left, indent) : fmt::format("{:<{}}", left, about_at);
    for (const char character : about) {
        text += character;
        text += character == '\n' ? indent : "";
    }
    text += '\n';
}

} // namespace

std::string help_text()
{
    std::string text = usage;
    for (const vor::Option& row : server::option_rows()) {
        add_row(text, row.name, row.value, row.about);
    }
    const auto add_handlers = [&text](bool live) {
        for (const Handler& row : handlers()) {
            if (row.is_live == live) {
                add_row(text, row.name, row.operands, row.about);
            }
        }
    };
    for (const server::CommandRow& row : server::command_rows()) {
        if (!row.about.empty()) {
            add_row(text, row.name, row.operands, row.about);
        } else if (row.name == "watch") {
            add_handlers(true);
        }
    }
    add_handlers(false);
    return fmt::format("{}\n{}{}", text, filters, rest);
}

} // namespace vorsim::client
