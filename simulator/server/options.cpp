#include "server/options.hpp"

#include <algorithm>
#include <charconv>
#include <limits>

#include <fmt/core.h>

#include "faults/parse.hpp"

namespace vorsim {
namespace {

template <class Number>
Number number_of(const std::string& option, const std::string& text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc{} || end != text.data() + text.size()) {
        throw UsageError(fmt::format("{} is \"{}\": must be a number from 0 to {}", option, text,
                                     std::numeric_limits<Number>::max()));
    }
    return number;
}

std::uint16_t manager_of(const std::string& option, const std::string& name)
{
    const auto sap = faults::sap_named(name);
    if (!sap) {
        throw UsageError(fmt::format("{} takes a manager's name or its SAP, not \"{}\"", option, name));
    }
    return *sap;
}

// "ethmgr=20ms..80ms", "ethmgr=50ms"
std::pair<std::uint16_t, Delay> delay_of(const std::string& text)
{
    const std::size_t equals = std::min(text.find('='), text.size());
    const std::string times = text.substr(std::min(equals + 1, text.size()));
    const std::size_t dots = std::min(times.find(".."), times.size());
    const auto least = faults::time_of(times.substr(0, dots));
    const auto most = dots == times.size() ? least : faults::time_of(times.substr(dots + 2));
    if (!least || !most || *least > *most) {
        throw UsageError(fmt::format("--delay is \"{}\": expected such as ethmgr=20ms..80ms", text));
    }
    return {manager_of("--delay", text.substr(0, equals)), Delay{*least, *most}};
}

} // namespace

const char* const help_text =
    R"(usage: vorsim [OPTION]...        be the gateway: all managers and konfd
       vorsim COMMAND ...        as told below

  --sap N           serve one more SAP for transport applications (repeatable)
  --strict          exit with 3 when any message was not as the tables say
  --seed N          where counters and measurements begin (default 1)
  --state FILE      write the state as JSON, at the start and when stopping
  --journal FILE    append one JSON object per message
  --show-secrets    passwords in clear, in lines, state, journal and konfd's answers
  --faults FILE     have the rules in the file, one a line, in force from the start
  --without MANAGER leave the manager to a program of yours (repeatable)
  --delay MANAGER=20ms..80ms  how long the manager takes for each answer
  --lenient-konfd   konfd makes the paths that are not there
  --http PORT       a page to look at, for browsers of this machine; its link is
                    printed behind the ready line (0: on a port that is free)
  --http-control    have the page switch faults and managers, too
  --help            print this

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

Options read_options(const std::vector<std::string>& arguments)
{
    Options options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const std::string& option = *argument;
        const auto value = [&]() -> const std::string& {
            if (argument + 1 == arguments.end()) {
                throw UsageError(fmt::format("{} needs a value", option));
            }
            return *++argument;
        };
        if (option == "--help" || option == "-h") {
            options.help = true;
        } else if (option == "--sap") {
            options.more_saps.push_back(number_of<std::uint16_t>("--sap", value()));
        } else if (option == "--seed") {
            options.seed = number_of<std::uint64_t>("--seed", value());
        } else if (option == "--strict") {
            options.strict = true;
        } else if (option == "--state") {
            options.state_file = value();
        } else if (option == "--journal") {
            options.journal_file = value();
        } else if (option == "--faults") {
            options.faults_file = value();
        } else if (option == "--without") {
            options.without.push_back(manager_of(option, value()));
        } else if (option == "--delay") {
            const auto [sap, delay] = delay_of(value());
            options.delays.insert_or_assign(sap, delay);
        } else if (option == "--lenient-konfd") {
            options.lenient_konfd = true;
        } else if (option == "--show-secrets") {
            options.show_secrets = true;
        } else if (option == "--http") {
            options.http = number_of<std::uint16_t>("--http", value());
        } else if (option == "--http-control") {
            options.http_control = true;
        } else {
            throw UsageError(fmt::format("unknown option \"{}\"", option));
        }
    }
    if (options.http_control && !options.http) {
        throw UsageError("--http-control needs --http PORT");
    }
    return options;
}

} // namespace vorsim
