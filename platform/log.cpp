#include "log.hpp"

#include <cstdio>
#include <cstring>

namespace vorinfra {

// Written at once, so that lines of several processes on one terminal do not mix. A line that is too long is cut, but
// keeps its line end.
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

void report(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write_line(format, arguments);
    va_end(arguments);
}

} // namespace vorinfra
