#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_device_name>("devicename", "set-device-name", "device_name option-",
                                     "Sets the gateway device's name.", "gateway-17 1"),
    command<vor_cfg_set_device_location>("devicename", "set-device-location", "device_location option-",
                                         "Sets the gateway device's location.", "\"shelter, rack 2\" 1"),
    command<vor_cfg_set_device_id>("devicename", "set-device-id", "sensor_id option-", "Sets the gateway device's id.",
                                   "170001 1"),
};

std::span<const Row> devicename_rows()
{
    return rows;
}

} // namespace vorcfg
