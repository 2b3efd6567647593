#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<set_wifi_monitor_channel_name>("wifimonitor", "set-channel-name", "channel_name set",
                                           "Names the data channel the monitor feeds.", "wifi-presence 1"),
};

std::span<const Row> wifimonitor_rows()
{
    return rows;
}

} // namespace vorcfg
