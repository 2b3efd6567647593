// run.hpp: one call, or a batch of them, from the command line to the exit code.
#pragma once

#include <string>

#include "options.hpp"

namespace vorcfg {

int run_call(const Options& options);
int run_batch(const std::string& path, const Options& options);

} // namespace vorcfg
