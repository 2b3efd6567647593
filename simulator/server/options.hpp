// options.hpp: vorsim's command line.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "server/managers.hpp"
#include "text/options.hpp"

namespace vorsim {

// What the command line or the environment got wrong: exit code 2.
using UsageError = vor::OptionError;

struct Options {
    bool help = false;
    bool strict = false;
    bool show_secrets = false;
    bool lenient_konfd = false;
    std::uint64_t seed = 1;
    std::vector<std::uint16_t> more_saps;
    std::optional<std::string> state_file;
    std::optional<std::string> journal_file;
    std::optional<std::string> faults_file;
    std::vector<std::uint16_t> without;    // the managers left to others
    std::map<std::uint16_t, Delay> delays; // by manager
    std::optional<std::uint16_t> http;     // the page's port; 0: the system chooses
    bool http_control = false;
};

Options read_options(const std::vector<std::string>& arguments);

// What --help prints, but for the commands.
std::string help_text();

} // namespace vorsim
