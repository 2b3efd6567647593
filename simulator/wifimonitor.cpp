#include "families.hpp"

namespace vorsim {
namespace {

constexpr Call calls[] = {
    {tells(18, 0x12001), "set_wifi_monitor_channel_name", "monitor", chain(text(1, "channel_name"), int16(2, "set"))},
};

} // namespace

const Family wifimonitor{"wifimonitor", calls};

} // namespace vorsim
