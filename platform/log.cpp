#include "log.hpp"

#include <cstdio>
#include <cstring>

namespace vorinfra {

// Written at once, so that lines of several processes on one terminal do not mix. A line that is too long is cut, but
// keeps its line end. What is not ASCII may be anything, from the environment.
void write_line(const char* format, va_list arguments)
{
    constexpr char prefix[] = "vorinfra: ";
    constexpr size_t start = sizeof prefix - 1;
    char line[512];
    memcpy(line, prefix, start);
    vsnprintf(line + start, sizeof line - start - 1, format, arguments);
    char shown[4 * sizeof line];
    char* end = shown;
    for (const char* at = line; *at != '\0'; at++) {
        const bool plain = (*at >= ' ' && *at < 0x7f) || *at == '\n';
        end += plain ? sprintf(end, "%c", *at) : sprintf(end, "\\x%02x", static_cast<unsigned char>(*at));
    }
    if (end[-1] != '\n') {
        strcpy(end, "\n");
    }
    fputs(shown, stderr);
}

void report(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write_line(format, arguments);
    va_end(arguments);
}

} // namespace vorinfra
