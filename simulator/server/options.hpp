// options.hpp: vorsim's command line.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "server/managers.hpp"
#include "text/options.hpp"
#include "text/screen.hpp"

namespace vorsim::server {

// An error of the command line or the environment: exit code 2.
using UsageError = vor::OptionError;

struct Options {
    bool help = false;
    bool strict = false;
    bool show_secrets = false;
    bool lenient_konfd = false;
    bool ids = false;
    vor::ColorWhen color{};
    std::uint64_t seed = 1;
    std::vector<std::uint16_t> more_saps;
    std::optional<std::string> state_file;
    std::optional<std::string> journal_file;
    std::optional<std::string> faults_file;
    std::vector<faults::Rule> faults;         // further ones
    std::set<std::uint16_t> without;          // managers left to other programs
    std::map<std::uint16_t, std::string> via; // the directories of real managers
    std::optional<std::string> via_any;       // that of all others
    std::map<std::uint16_t, Delay> delays;    // by manager
    std::optional<std::uint16_t> http;        // the page's port; 0: any free one
    bool http_control = false;

    std::set<std::uint16_t> served() const;
    // Each manager that messages are passed on to.
    std::map<std::uint16_t, std::string> ways() const;
};

// The option in front, if it is one of the gateway's. Throws a UsageError.
bool take_option(vor::Operands& operands, Options& options);
// Throws a UsageError about options that contradict each other.
void check(const Options& options);
Options read_options(const std::vector<std::string>& arguments);

std::span<const vor::OptionOf<Options>> option_rows();

// The SAP of a manager's name or number. Throws a UsageError.
std::uint16_t manager_of(std::string_view option, std::string_view name);
// The time that an option is given. Throws a UsageError.
std::chrono::milliseconds time_of(std::string_view option, std::string_view text);

} // namespace vorsim::server
