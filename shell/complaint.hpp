// complaint.hpp: what the shell says instead of doing what it was told.
#pragma once

#include <stdexcept>
#include <string>

#include "exits.hpp"

namespace vorcfg {

struct Complaint : std::runtime_error {
    explicit Complaint(const std::string& text, ExitCode code = exit_usage, std::size_t which = no_token)
        : std::runtime_error(text), exit(code), token(which)
    {
    }

    // Before the arguments stand the family and the call.
    static constexpr std::size_t no_token = std::size_t(-2);
    static constexpr std::size_t call_token = std::size_t(-1);
    ExitCode exit;
    std::size_t token; // the argument complained about, counted from 0
};

} // namespace vorcfg
