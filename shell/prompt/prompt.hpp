// prompt.hpp: vorcfg without arguments: runs lines from a terminal or a pipe.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "input/options.hpp"

namespace vorcfg::prompt {

// Where the lines come from.
class Lines {
public:
    virtual ~Lines() = default;
    // Without its end; empty if Ctrl-C ended it. None at the end of input.
    virtual std::optional<std::string> next() = 0;
    // Adds it to the lines that can be recalled.
    virtual void keep(const std::string&) {}
};

// Lines with editing, completion and history, for a terminal. Only in builds with libedit.
std::unique_ptr<Lines> edited_lines();

inline constexpr const char* prompt_text = "vorcfg> ";

// Runs each line with its own options and those given. The exit code is that of the worst line; 0 at a terminal.
int run_prompt(const input::Options& given);

} // namespace vorcfg::prompt
