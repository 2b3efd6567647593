#include "log.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "settings.hpp"

namespace vorinfra {

namespace {

// Composed first and written at once, so that lines of several processes on
// one terminal do not mix. What is too long loses its end, never its line end.
void write_line(const char* format, va_list arguments)
{
    constexpr char prefix[] = "vorinfra: ";
    constexpr size_t start = sizeof prefix - 1;
    char line[512];
    memcpy(line, prefix, start);
    vsnprintf(line + start, sizeof line - start - 1, format, arguments);
    const size_t length = strlen(line);
    if (line[length - 1] != '\n') {
        memcpy(line + length, "\n", 2);
    }
    fputs(line, stderr);
}

bool wanted(vor_uint16 levels)
{
    return (log_levels().value_or(0) & levels) != 0;
}

} // namespace

void complain(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write_line(format, arguments);
    va_end(arguments);
}

void log_line(vor_uint16 levels, const char* format, ...)
{
    if (wanted(levels)) {
        va_list arguments;
        va_start(arguments, format);
        write_line(format, arguments);
        va_end(arguments);
    }
}

} // namespace vorinfra

void vor_dbg_log(vor_uint16 level_mask, const char* format, ...)
{
    if (vorinfra::wanted(level_mask)) {
        va_list arguments;
        va_start(arguments, format);
        vorinfra::write_line(format, arguments);
        va_end(arguments);
    }
}
