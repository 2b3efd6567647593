#include "server/options.hpp"

#include <algorithm>
#include <limits>

#include <fmt/core.h>

#include "faults/parse.hpp"
#include "tables/managers.hpp"
#include "tables/names.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::server {
namespace {

template <class Number>
Number number_of(std::string_view option, std::string_view text)
{
    const auto number = vor::number_in<Number>(text);
    if (!number) {
        throw UsageError(
            fmt::format("{} must be 0 to {}, not \"{}\"", option, std::numeric_limits<Number>::max(), text));
    }
    return *number;
}

// "ethmgr=20ms..80ms", "ethmgr=50ms"
void take_delay(Options& options, std::string_view text)
{
    const std::size_t equals = std::min(text.find('='), text.size());
    const std::string_view times = text.substr(std::min(equals + 1, text.size()));
    const std::size_t dots = times.find("..");
    const auto least = vor::time_in(times.substr(0, dots));
    const auto most = dots == times.npos ? least : vor::time_in(times.substr(dots + 2));
    if (!least || !most) {
        throw UsageError(fmt::format("--delay must be MANAGER=TIME or MANAGER=TIME..TIME, not {}", vor::quoted(text)));
    }
    if (*least > *most) {
        throw UsageError(fmt::format("the first time of --delay must not exceed the second: {}", vor::quoted(text)));
    }
    options.delays.insert_or_assign(manager_of("--delay", text.substr(0, equals)), Delay{*least, *most});
}

// "gpiomgr=/run/real", "any=/run/real"
void take_via(Options& options, std::string_view text)
{
    const std::size_t equals = std::min(text.find('='), text.size());
    const std::string_view name = text.substr(0, equals);
    const std::string_view directory = text.substr(std::min(equals + 1, text.size()));
    if (!directory.starts_with('/')) {
        throw UsageError(
            fmt::format("--via must be MANAGER=DIRECTORY, with an absolute path, not {}", vor::quoted(text)));
    }
    if (name == "any") {
        options.via_any = directory;
    } else {
        if (!options.via.emplace(manager_of("--via", name), directory).second) {
            throw UsageError(fmt::format("--via must name {} only once", vor::quoted(name)));
        }
    }
}

using vor::taken_as;
using Text = std::string_view;

constexpr vor::OptionOf<Options> gateway_options[] = {
    {{"--sap", "N", "serve one more SAP, for an application (repeatable)"},
     [](Options& options, Text value) { options.more_saps.push_back(number_of<std::uint16_t>("--sap", value)); }},
    {{"--without", "MANAGER", "leave a manager to another program (repeatable)"},
     [](Options& options, Text value) { options.without.insert(manager_of("--without", value)); }},
    {{"--via", "MANAGER=DIRECTORY", "pass a manager's messages on to the real one in\nDIRECTORY (any=DIRECTORY: all)"},
     take_via},
    {{"--delay", "MANAGER=20ms..80ms", "delay each answer of a manager"}, take_delay},
    {{"--faults", "FILE", "start with the fault rules in FILE, one per line"}, taken_as<&Options::faults_file>},
    {{"--fault", "RULE", "start with this fault rule (repeatable)"},
     [](Options& options, Text value) {
         try {
             options.faults.push_back(faults::parse_rule(value));
         } catch (const faults::RuleError& error) {
             refuse_at(value, error);
         }
     }},
    {{"--lenient-konfd", "", "let konfd create missing paths"}, taken_as<&Options::lenient_konfd>},
    {{"--seed", "N", "set where counters and readings start (default 1)"},
     [](Options& options, Text value) { options.seed = number_of<std::uint64_t>("--seed", value); }},
    {{"--strict", "", "exit with 3 if any message was refused, invalid,\nmalformed or foreign"},
     taken_as<&Options::strict>},
    {{"--journal", "FILE", "append a JSON object per message to FILE"}, taken_as<&Options::journal_file>},
    {{"--state", "FILE", "write the state to FILE as JSON, at start and at exit"}, taken_as<&Options::state_file>},
    {{"--show-secrets", "", "do not mask passwords, in any output"}, taken_as<&Options::show_secrets>},
    {{"--ids", "", "show SAPs and message ids"}, taken_as<&Options::ids>},
    {{"--color", "WHEN", "colour lines: auto (at a terminal), always or never"},
     [](Options& options, Text value) { options.color = vor::color_when(value); }},
    {{"--http", "PORT", "serve a page to browsers on this machine and print its\nlink (0: any free port)"},
     [](Options& options, Text value) { options.http = number_of<std::uint16_t>("--http", value); }},
    {{"--http-control", "", "let the page change faults, managers and readings"}, taken_as<&Options::http_control>},
    {{"--help", "", "print this help"}, taken_as<&Options::help>},
};

} // namespace

std::span<const vor::OptionOf<Options>> option_rows()
{
    return gateway_options;
}

std::uint16_t manager_of(std::string_view option, std::string_view name)
{
    if (name.empty()) {
        throw UsageError(fmt::format("{} needs a manager's name or SAP", option));
    }
    try {
        return tables::checked_sap(name);
    } catch (const tables::NameError& error) {
        throw UsageError(fmt::format("{}: {}", option, error.what()));
    }
}

void refuse_at(std::string_view text, const vor::WordError& error)
{
    const std::string_view front = text.substr(0, error.column - 1);
    throw UsageError(fmt::format("column {}: {}\n  {}\n  {:{}}^", error.column, error.what(), vor::printable(text), "",
                                 vor::characters_in(vor::printable(front))));
}

std::chrono::milliseconds time_of(std::string_view option, std::string_view text)
{
    const auto time = vor::time_in(text);
    return time ? *time
                : throw UsageError(
                      fmt::format("{} must be a time such as 500ms, 10s or 2m, not {}", option, vor::quoted(text)));
}

bool take_option(vor::Operands& operands, Options& options)
{
    return operands.take_option(gateway_options, options);
}

void check(const Options& options)
{
    if (options.http_control && !options.http) {
        throw UsageError("--http-control requires --http PORT");
    }
    for (const std::uint16_t sap : options.without) {
        const bool more = std::ranges::find(options.more_saps, sap) != options.more_saps.end();
        const bool fault = std::ranges::any_of(options.faults, [sap](const faults::Rule& rule) {
            return rule.condition.who == faults::Condition::Who::manager && rule.condition.sap == sap;
        });
        const char* const other = options.via.contains(sap)      ? "--via"
                                  : options.delays.contains(sap) ? "--delay"
                                  : more                         ? "--sap"
                                  : fault                        ? "--fault"
                                                                 : nullptr;
        if (other != nullptr) {
            throw UsageError(fmt::format("--without leaves {} to another program, so {} must not name it",
                                         tables::manager_key(sap), other));
        }
    }
}

Options read_options(const std::vector<std::string>& arguments)
{
    Options options;
    for (vor::Operands operands(arguments); !operands.empty();) {
        if (!take_option(operands, options)) {
            operands.refuse();
        }
    }
    check(options);
    return options;
}

std::set<std::uint16_t> Options::served() const
{
    std::set<std::uint16_t> saps(more_saps.begin(), more_saps.end());
    for (const tables::Manager& manager : tables::managers) {
        saps.insert(manager.sap);
    }
    for (const auto& [sap, directory] : via) {
        saps.insert(sap);
    }
    for (const std::uint16_t sap : without) {
        saps.erase(sap);
    }
    return saps;
}

std::map<std::uint16_t, std::string> Options::ways() const
{
    std::map<std::uint16_t, std::string> ways = via;
    if (via_any) {
        for (const std::uint16_t sap : served()) {
            ways.emplace(sap, *via_any);
        }
    }
    return ways;
}

} // namespace vorsim::server
