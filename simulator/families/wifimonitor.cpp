#include "tables/families.hpp"

namespace vorsim::families {

constexpr MessageRow rows[] = {
    {one_way(0x12001), "set_wifi_monitor_channel_name", "monitor", chain(text(1, "channel_name"), int16(2, "set"))},
};

extern const Family wifimonitor{"wifimonitor", rows};

} // namespace vorsim::families
