#include <device_mgmt/wifimonitor.h>

#include "calls.hpp"

CALLS(wifimonitor) = {
    CALL(set_wifi_monitor_channel_name("scan"_t, 200), "sap 18 id 0x12001 one-way | 1 str 'scan' | 2 i16 200",
         sent_chain_minus_one),
};
