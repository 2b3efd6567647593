#include "server/commands.hpp"

#include <algorithm>
#include <charconv>

#include <fmt/core.h>

#include "faults/parse.hpp"
#include "gateway/readings.hpp"
#include "server/options.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

// Takes the first word off.
std::string_view take_word(std::string_view& text)
{
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

Command fault_command(std::string_view rest)
{
    const std::string_view what = take_word(rest);
    if (what == "add") {
        try {
            return AddFault{faults::parse_rule(rest)};
        } catch (const faults::Complaint& complaint) {
            throw UsageError(fmt::format("fault add: column {} of the rule: {}", complaint.column, complaint.what()));
        }
    }
    if (what == "list" && rest.empty()) {
        return ListFaults();
    }
    unsigned number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (what == "clear" && (rest.empty() || (error == std::errc{} && end == rest.data() + rest.size()))) {
        return ClearFaults{rest.empty() ? std::nullopt : std::optional(number)};
    }
    throw UsageError("expected fault add RULE, fault list or fault clear [N]");
}

std::uint16_t manager_in(std::string_view command, std::string_view name)
{
    const auto sap = faults::sap_named(name);
    if (!sap) {
        throw UsageError(fmt::format("{} takes a manager's name or its SAP, not \"{}\"", command, vor::escaped(name)));
    }
    return *sap;
}

} // namespace

bool is_command(std::string_view word)
{
    return word == "fault" || word == "stop" || word == "start" || word == "set";
}

Command command_of(std::string_view request)
{
    if (request.size() > longest_command || std::ranges::any_of(request, [](unsigned char c) { return c < 0x20; })) {
        throw UsageError(fmt::format("a command has at most {} bytes and no control characters", longest_command));
    }
    std::string_view rest = request;
    const std::string_view command = take_word(rest);
    if (command == "fault") {
        return fault_command(rest);
    }
    if (command == "stop") {
        return StopManager{manager_in(command, rest)};
    }
    if (command == "start") {
        return StartManager{manager_in(command, rest)};
    }
    try {
        set_reading(rest, nullptr);
    } catch (const std::exception& error) {
        throw UsageError(fmt::format("set: {}", error.what()));
    }
    return SetReading{std::string(rest)};
}

} // namespace vorsim
