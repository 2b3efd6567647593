// serve.hpp: requests on standard input, each a line of JSON, and an answer to each on standard output.
#pragma once

#include <string_view>

#include "input/options.hpp"

namespace vorcfg::serve {

// Until the end of input; the exit code.
int serve(std::string_view version, const input::Options& options);

} // namespace vorcfg::serve
