// commands.hpp: the commands over a file and its journal.
#pragma once

#include <string>

#include "input/options.hpp"

namespace vorcfg {

int run_plan(const std::string& path, const Options& options);
int run_apply(const std::string& path, const Options& options);

// Over a journal. A report is text, JSON or, with --html, a page.
int run_confirm(const std::string& path, const Options& options);
int run_revert(const std::string& path, const Options& options);
int run_report(const std::string& path, const Options& options);

} // namespace vorcfg
