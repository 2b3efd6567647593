#include "tables/families.hpp"

namespace vorsim::families {

constexpr MessageRow rows[] = {
    {request(0x15014), "vor_cfg_set_device_name", "device", chain(text(27, "device_name"))},
    {request(0x15015), "vor_cfg_set_device_location", "device", chain(text(28, "device_location"))},
    {request(0x15016), "vor_cfg_set_device_id", "device", chain(uint32(29, "sensor_id"))},
};

extern const Family devicename{"towermon", rows};

} // namespace vorsim::families
