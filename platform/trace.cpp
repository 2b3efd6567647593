// The lines that VORINFRA_LOG asks for.
#include "log.hpp"
#include "settings.hpp"

namespace vorinfra {

namespace {

bool is_logged(vor_uint16 levels)
{
    return (log_levels().value_or(0) & levels) != 0;
}

} // namespace

void log_line(vor_uint16 levels, const char* format, ...)
{
    if (is_logged(levels)) {
        va_list arguments;
        va_start(arguments, format);
        write_line(format, arguments);
        va_end(arguments);
    }
}

} // namespace vorinfra

void vor_dbg_log(vor_uint16 level_mask, const char* format, ...)
{
    if (vorinfra::is_logged(level_mask)) {
        va_list arguments;
        va_start(arguments, format);
        vorinfra::write_line(format, arguments);
        va_end(arguments);
    }
}
