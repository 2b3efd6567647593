#include <device_mgmt/wifimonitor.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(wifimonitor, call<set_wifi_monitor_channel_name>("set-channel-name", {"channel_name", "set"}, "wifi-presence 1"))

} // namespace vorcfg::rows
