#include "settings.hpp"

#include <charconv>
#include <cstdlib>
#include <cstring>

#include "log.hpp"

namespace vorinfra {

namespace {

// The whole text as a number from `least` to `most`, "0x" for hexadecimal.
std::optional<int> number(const char* name, int least, int most, int otherwise)
{
    const char* const text = setting(name);
    if (text == nullptr) {
        return otherwise;
    }
    const bool hexadecimal = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char* const end = text + strlen(text);
    unsigned value = 0;
    const auto read = std::from_chars(text + (hexadecimal ? 2 : 0), end, value, hexadecimal ? 16 : 10);
    if (read.ec != std::errc() || read.ptr != end || value < static_cast<unsigned>(least) ||
        value > static_cast<unsigned>(most)) {
        report("%s must be %d to %d, not \"%s\"", name, least, most, text);
        return std::nullopt;
    }
    return static_cast<int>(value);
}

} // namespace

const char* setting(const char* name)
{
    const char* const value = getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

std::optional<int> timeout_milliseconds()
{
    return number("VORINFRA_TIMEOUT_MS", 1, 600000, 3000);
}

std::optional<vor_uint16> log_levels()
{
    const auto levels = number("VORINFRA_LOG", 0, 0xffff, 0);
    return levels ? std::optional(static_cast<vor_uint16>(*levels)) : std::nullopt;
}

std::optional<bool> timers_run()
{
    const char* const value = setting("VORINFRA_TIMERS");
    if (value == nullptr) {
        return false;
    }
    if (strcmp(value, "run") == 0) {
        return true;
    }
    report("VORINFRA_TIMERS must be \"run\" or unset, not \"%s\"", value);
    return std::nullopt;
}

} // namespace vorinfra
