// options.hpp: vorsim's command line.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorsim {

// What the command line or the environment got wrong: exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Options {
    bool help = false;
    bool strict = false;
    bool show_secrets = false;
    std::uint64_t seed = 1;
    std::vector<std::uint16_t> more_saps;
    std::optional<std::string> state_file;
    std::optional<std::string> journal_file;
};

Options read_options(const std::vector<std::string>& arguments);

extern const char* const help_text;

} // namespace vorsim
