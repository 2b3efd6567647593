// clock.hpp: the time of day, in UTC.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace vorcfg {

// SOURCE_DATE_EPOCH, where it is set: what is written can then be reproduced.
std::time_t now();

std::string stamp(std::time_t time); // "2026-05-12T10:04:00Z"
// "2026-05-12 10:04 UTC", of a stamp
std::string minute_of(std::string_view stamp);
// "2026-05-12 10:04:00 UTC"
std::string second_of(std::string_view stamp);

} // namespace vorcfg
