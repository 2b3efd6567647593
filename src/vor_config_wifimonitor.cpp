// The Wi-Fi monitor.
#include <device_mgmt/wifimonitor.h>

#include "frame.hpp"

namespace {

constexpr Frame wifi_monitor = sap(18) | one_way | null_payload_keeps;
constexpr vor_uint32 monitor_channel = 0x12001;

} // namespace

// Every failure is -1, and one after the buffer was taken keeps it.
vor_int32 set_wifi_monitor_channel_name(vor_char* channel_name, vor_boolean set)
{
    Call call;
    if (prepare<wifi_monitor>(call, str<1>(channel_name), int16<2>(set)) != ok ||
        vor_ipc_send(call.handle, static_cast<vor_uint16>(wifi_monitor), monitor_channel, &call.request, call.length,
                     0) != 0) {
        return -1;
    }
    vor_ipc_drop_msg_buf(&call.request);
    return 0;
}
