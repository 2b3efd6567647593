// report.hpp: what became of a call, for a reader and for a program.
#pragma once

#include <string>

#include "session.hpp"

namespace vorcfg {

std::string call_name(const Row& row);

// The lines for a reader, each ended.
std::string text_of(const Planned& planned, const Report& report);

// One object on one line; its fields are told by their schema number.
std::string json_of(const Planned& planned, const Report& report);

} // namespace vorcfg
