// prompt.hpp: vorcfg without words: line after line, from a terminal or a pipe.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "input/options.hpp"

namespace vorcfg {

// Where the lines come from.
class Lines {
public:
    virtual ~Lines() = default;
    // Without its end; empty where it was interrupted. None at the end.
    virtual std::optional<std::string> next() = 0;
    // To be offered again.
    virtual void keep(const std::string&) {}
};

// Edited, completed and remembered, at a terminal. Not built in where libedit is missing.
std::unique_ptr<Lines> edited_lines();

inline constexpr const char* prompt_text = "vorcfg> ";

// Each line is run with its own options besides those given. Of a pipe the exit code is that of the worst line; a
// terminal's session ends with 0.
int run_prompt(const Options& given);

} // namespace vorcfg
