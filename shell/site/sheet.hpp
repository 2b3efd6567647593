// sheet.hpp: the hand-over sheet of a site, from its journal.
#pragma once

#include <string>

#include "input/options.hpp"

namespace vorcfg {

// `vorcfg report JOURNAL`: text, or with --html one page that needs nothing from elsewhere.
int run_report(const std::string& path, const Options& options);

} // namespace vorcfg
