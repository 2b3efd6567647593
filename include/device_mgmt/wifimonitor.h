/**
 * @file
 * wifimonitor.h: the Wi-Fi monitor (SAP 18).
 *
 * Message buffers kept: its only one, when that has no room or is refused by the platform.
 */
#ifndef DEVICE_MGMT_WIFIMONITOR_H
#define DEVICE_MGMT_WIFIMONITOR_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/**
 * Name the data channel the monitor feeds. One-way: its verdict never comes back.
 *
 * @param channel_name  passed to the monitor unchanged
 * @param set           passed to the monitor unchanged
 * @return 0 sent; -1 for every failure, vor_errno is never touched
 */
vor_int32 set_wifi_monitor_channel_name(vor_char* channel_name, vor_boolean set);

VOR_DECLARATIONS_END

#endif
