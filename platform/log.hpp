// log.hpp: what the platform tells the developer, on standard error.
#pragma once

#include <cstdarg>

#include <vorinfra.h>

namespace vorinfra {

// One line, for what went wrong and why.
[[gnu::format(printf, 1, 2)]] void complain(const char* format, ...);

[[gnu::format(printf, 1, 0)]] void write_line(const char* format, va_list arguments);

// One line, when VORINFRA_LOG asks for one of the levels.
[[gnu::format(printf, 2, 3)]] void log_line(vor_uint16 levels, const char* format, ...);

constexpr vor_uint16 log_messages = 0x0001; // the level of the message trace

} // namespace vorinfra
