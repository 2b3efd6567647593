// commands.hpp: vorcfg's commands, tied together: what is read, made and told.
#pragma once

#include "input/options.hpp"

namespace vorcfg {

// The exit code. Throws a Complaint about what was not done.
int run(const Options& options);

} // namespace vorcfg
