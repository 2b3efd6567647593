// log.hpp: the platform's messages to the developer, on standard error.
#pragma once

#include <cstdarg>

#include <vorinfra.h>

namespace vorinfra {

// One line about an error.
[[gnu::format(printf, 1, 2)]] void report(const char* format, ...);

[[gnu::format(printf, 1, 0)]] void write_line(const char* format, va_list arguments);

// One line, when VORINFRA_LOG asks for one of the levels.
[[gnu::format(printf, 2, 3)]] void log_line(vor_uint16 levels, const char* format, ...);

constexpr vor_uint16 log_messages = 0x0001; // the level of the message trace

} // namespace vorinfra
