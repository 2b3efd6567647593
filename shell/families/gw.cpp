#include <device_mgmt/gw.h>

#include <cmath>
#include <cstdlib>

#include "rows/family.hpp"
#include "text/text.hpp"

namespace vorcfg::rows {

namespace {

// Degrees at the beginning of whatever form the manager takes: 12.9716N, -12.9716, 12 58 17 N.
template <int most>
std::string doubt_about_degrees(const Value& value)
{
    char* end = nullptr;
    const double degrees = std::strtod(value.text.c_str(), &end);
    if (end == value.text.c_str()) {
        return vor::quoted(value.text) + " does not begin with a number of degrees";
    }
    return std::abs(degrees) <= most ? ""
                                     : vor::escaped(value.text) + " is more than " + std::to_string(most) + " degrees";
}

} // namespace

FAMILY(gw,
       call<vor_cfg_set_gw_device_latitude_config>("set-device-latitude-config",
                                                   {number("set").between(0, 1),
                                                    Argument("latitude").warns(doubt_about_degrees<90>)},
                                                   "1 12.9716N"),
       call<vor_cfg_set_gw_device_longitude_config>("set-device-longitude-config",
                                                    {number("set").between(0, 1),
                                                     Argument("longitude").warns(doubt_about_degrees<180>)},
                                                    "1 77.5946E"))

} // namespace vorcfg::rows
