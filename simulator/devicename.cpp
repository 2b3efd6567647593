#include "families.hpp"

namespace vorsim {
namespace {

constexpr Call calls[] = {
    {asks(240, 0x15014), "vor_cfg_set_device_name", "device", chain(text(27, "device_name"))},
    {asks(240, 0x15015), "vor_cfg_set_device_location", "device", chain(text(28, "device_location"))},
    {asks(240, 0x15016), "vor_cfg_set_device_id", "device", chain(uint32(29, "sensor_id"))},
};

} // namespace

const Family devicename{"devicename", calls};

} // namespace vorsim
