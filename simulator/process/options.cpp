#include "process/options.hpp"

#include <charconv>
#include <limits>

#include <fmt/format.h>

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
  --help            print this

environment:
  VORINFRA_DIR      the directory of the gateway's sockets (absolute, mode 0700);
                    else $XDG_RUNTIME_DIR/vorinfra, else /tmp/vorinfra-UID
  VORINFRA_ROOT     konfd listens at $VORINFRA_ROOT/tmp/konfd.socket; without it
                    at /tmp/konfd.socket, when nobody else does

A line "vorsim: ready, ..." tells that messages can be sent. SIGTERM and SIGINT
stop the gateway and remove its sockets.

exit codes: 0 stopped, or the command did its work; 1 failed (the journal could
not be written on, nothing runs to be asked, a replay found differences); 2 bad
usage or environment, or it could not start: a SAP or the directory is in use, a
file cannot be written; 3 complaints under --strict, malformed and foreign
messages among them.

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
        } else if (option == "--show-secrets") {
            options.show_secrets = true;
        } else {
            throw UsageError(fmt::format("unknown option \"{}\"", option));
        }
    }
    return options;
}

} // namespace vorsim
