#include "site/clock.hpp"

#include <cstdlib>

#include <fmt/core.h>

#include "text/parse.hpp"

namespace vorcfg {

std::time_t now()
{
    const char* const fixed = std::getenv("SOURCE_DATE_EPOCH");
    const auto seconds = fixed != nullptr ? vor::number_in<std::int64_t>(fixed) : std::nullopt;
    return seconds ? static_cast<std::time_t>(*seconds) : std::time(nullptr);
}

std::string stamp(std::time_t time)
{
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

namespace {

std::string cut(std::string_view stamp, std::size_t end)
{
    constexpr std::size_t day = 10;
    return stamp.size() < end ? std::string(stamp)
                              : fmt::format("{} {} UTC", stamp.substr(0, day), stamp.substr(day + 1, end - day - 1));
}

} // namespace

std::string minute_of(std::string_view stamp)
{
    constexpr std::size_t minute = 16;
    return cut(stamp, minute);
}

std::string second_of(std::string_view stamp)
{
    constexpr std::size_t second = 19;
    return cut(stamp, second);
}

} // namespace vorcfg
