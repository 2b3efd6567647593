#include "server/options.hpp"

#include <algorithm>
#include <limits>

#include <fmt/core.h>

#include "faults/parse.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

template <class Number>
Number number_of(std::string_view option, std::string_view text)
{
    const auto number = vor::number_in<Number>(text);
    if (!number) {
        throw UsageError(fmt::format("{} is \"{}\": must be a number from 0 to {}", option, text,
                                     std::numeric_limits<Number>::max()));
    }
    return *number;
}

std::uint16_t manager_of(std::string_view option, std::string_view name)
{
    const auto sap = faults::sap_named(name);
    if (!sap) {
        throw UsageError(fmt::format("{} takes a manager's name or its SAP, not \"{}\"", option, name));
    }
    return *sap;
}

// "ethmgr=20ms..80ms", "ethmgr=50ms"
void take_delay(Options& options, std::string_view text)
{
    const std::size_t equals = std::min(text.find('='), text.size());
    const std::string_view times = text.substr(std::min(equals + 1, text.size()));
    const std::size_t dots = times.find("..");
    const auto least = vor::time_in(times.substr(0, dots));
    const auto most = dots == times.npos ? least : vor::time_in(times.substr(dots + 2));
    if (!least || !most || *least > *most) {
        throw UsageError(fmt::format("--delay is \"{}\": expected such as ethmgr=20ms..80ms", text));
    }
    options.delays.insert_or_assign(manager_of("--delay", text.substr(0, equals)), Delay{*least, *most});
}

using vor::taken_as;
using Text = std::string_view;

constexpr vor::OptionOf<Options> rows[] = {
    {{"--sap", "N", "serve one more SAP for transport applications (repeatable)"},
     [](Options& options, Text value) { options.more_saps.push_back(number_of<std::uint16_t>("--sap", value)); }},
    {{"--strict", "", "exit with 3 when any message was not as the tables say"}, taken_as<&Options::strict>},
    {{"--seed", "N", "where counters and measurements begin (default 1)"},
     [](Options& options, Text value) { options.seed = number_of<std::uint64_t>("--seed", value); }},
    {{"--state", "FILE", "write the state as JSON, at the start and when stopping"}, taken_as<&Options::state_file>},
    {{"--journal", "FILE", "append one JSON object per message"}, taken_as<&Options::journal_file>},
    {{"--show-secrets", "", "passwords in clear, in lines, state, journal and konfd's answers"},
     taken_as<&Options::show_secrets>},
    {{"--faults", "FILE", "have the rules in the file, one a line, in force from the start"},
     taken_as<&Options::faults_file>},
    {{"--without", "MANAGER", "leave the manager to a program of yours (repeatable)"},
     [](Options& options, Text value) { options.without.push_back(manager_of("--without", value)); }},
    {{"--delay", "MANAGER=20ms..80ms", "how long the manager takes for each answer"}, take_delay},
    {{"--lenient-konfd", "", "konfd makes the paths that are not there"}, taken_as<&Options::lenient_konfd>},
    {{"--http", "PORT",
      "a page to look at, for browsers of this machine; its link is\n"
      "printed behind the ready line (0: on a port that is free)"},
     [](Options& options, Text value) { options.http = number_of<std::uint16_t>("--http", value); }},
    {{"--http-control", "", "have the page switch faults and managers, too"}, taken_as<&Options::http_control>},
    {{"--help", "", "print this"}, taken_as<&Options::help>},
};

constexpr char usage[] =
    R"(usage: vorsim [OPTION]...        be the gateway: all managers and konfd
       vorsim COMMAND ...        as told below

)";

constexpr char beside_options[] =
    R"(
environment:
  VORINFRA_DIR      the directory of the gateway's sockets (absolute, mode 0700);
                    else $XDG_RUNTIME_DIR/vorinfra, else /tmp/vorinfra-UID
  VORINFRA_ROOT     konfd listens at $VORINFRA_ROOT/tmp/konfd.socket; without it
                    at /tmp/konfd.socket, when nobody else does

A line "vorsim: ready, ..." tells that messages can be sent. SIGTERM and SIGINT
stop the gateway and remove its sockets.

exit codes: 0 stopped, or the command did its work; 1 failed (the journal could
not be written on, nothing runs to be asked, it did not do what it was told, a
replay found differences); 2 bad usage, rules or environment, or it could not
start: a SAP, the directory or the port is in use, a file cannot be written; 3 complaints
under --strict, malformed and foreign messages among them, faults not.

commands:
)";

} // namespace

std::string help_text()
{
    constexpr std::size_t about_at = 20;
    std::string text = usage;
    for (const vor::Option& row : rows) {
        const std::string option = fmt::format("  {}{}{}", row.name, row.value.empty() ? "" : " ", row.value);
        text += option;
        text += std::string(option.size() < about_at ? about_at - option.size() : 2, ' ');
        for (const char character : row.about) {
            text += character;
            text += character == '\n' ? std::string(about_at, ' ') : "";
        }
        text += '\n';
    }
    return text + beside_options;
}

Options read_options(const std::vector<std::string>& arguments)
{
    Options options;
    for (vor::Operands operands(arguments); !operands.empty();) {
        if (!operands.take_option(rows, options)) {
            throw UsageError(fmt::format("unknown option \"{}\"", operands.front()));
        }
    }
    if (options.http_control && !options.http) {
        throw UsageError("--http-control needs --http PORT");
    }
    return options;
}

} // namespace vorsim
