// settings.hpp: the environment variables. An empty variable counts as unset;
// a value that makes no sense is reported and yields nothing.
#pragma once

#include <optional>

#include <vorinfra.h>

namespace vorinfra {

const char* setting(const char* name); // null: unset

std::optional<int> timeout_milliseconds(); // VORINFRA_TIMEOUT_MS
std::optional<vor_uint16> log_levels();    // VORINFRA_LOG
std::optional<bool> timers_run();          // VORINFRA_TIMERS

} // namespace vorinfra
