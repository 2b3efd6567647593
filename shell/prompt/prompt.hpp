// prompt.hpp: vorcfg without words: line after line, from a terminal or a pipe.
#pragma once

#include "input/options.hpp"

namespace vorcfg {

// Each line is run with its own options besides those given. Of a pipe the exit code is that of the worst line; a
// terminal's session ends with 0.
int run_prompt(const Options& options, int (*run)(const Options&));

} // namespace vorcfg
