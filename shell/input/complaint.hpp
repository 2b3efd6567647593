// complaint.hpp: what the shell says instead of doing what it was told.
#pragma once

#include <cstddef>
#include <string>

#include "input/exit_codes.hpp"

namespace vorcfg {

// Where a line of a batch stands; all empty on the command line.
struct Place {
    std::string file;
    std::size_t line = 0;
    std::size_t column = 0;
};

struct Complaint {
    static constexpr std::size_t no_word = static_cast<std::size_t>(-1);

    std::string text;
    ExitCode exit = exit_usage;
    std::string argument{};     // the one complained about, if it is one
    std::size_t word = no_word; // its place in the line, the family's name being 0
    std::string call{};
    Place place{};
};

} // namespace vorcfg
