#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_gw_device_latitude_config>("gw", "set-device-latitude-config", "set latitude",
                                                   "Sets or clears the gateway's latitude.", "1 12.9716N"),
    command<vor_cfg_set_gw_device_longitude_config>("gw", "set-device-longitude-config", "set longitude",
                                                    "Sets or clears the gateway's longitude.", "1 77.5946E"),
};

std::span<const Row> gw_rows()
{
    return rows;
}

} // namespace vorcfg
