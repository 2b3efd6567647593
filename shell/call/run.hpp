// run.hpp: one call, or a batch of them, from the command line to the exit code.
#pragma once

#include <string>

#include "input/complaint.hpp"
#include "input/options.hpp"

namespace vorcfg {

int run_call(const Options& options);
int run_batch(const std::string& path, const Options& options);

// Says a complaint on standard error; its exit code.
int complain(const Complaint& complaint, bool json);

} // namespace vorcfg
