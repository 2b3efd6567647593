// records.hpp: what vorcfg writes as JSON, against docs/vorcfg.schema.json.
#pragma once

#include <string>

namespace processes {

// Why the line is not as described, fields that are not named there included; empty where it is.
std::string mismatch(const std::string& line);

} // namespace processes
