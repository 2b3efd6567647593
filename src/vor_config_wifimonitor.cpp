// The Wi-Fi monitor.
#include <device_mgmt/wifimonitor.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame wifi_monitor = sap(18) | one_way | null_payload_keeps;
constexpr MessageId monitor_channel = 0x12001;

} // namespace

// Every failure is -1, and one after the buffer was taken keeps it.
vor_int32 set_wifi_monitor_channel_name(vor_char* channel_name, vor_boolean set)
{
    Exchange exchange;
    if (exchange.prepare<wifi_monitor, monitor_channel>(str<1>(channel_name), int16<2>(set)) != ok ||
        vor_ipc_send(exchange.handle, exchange.frame.sap, exchange.id.number, &exchange.request, exchange.length, 0) !=
            0) {
        return -1;
    }
    vor_ipc_drop_msg_buf(&exchange.request);
    return 0;
}
