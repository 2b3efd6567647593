/**
 * @file
 * device_mgmt.h: every call of the device-management library.
 *
 * Bind an endpoint first (device_mgmt/common.h), then call. A call sends one
 * message to the manager that owns the setting and returns when the manager
 * has answered or the platform has failed; it checks no argument unless its
 * header says so.
 *
 *     #include <device_mgmt.h>
 *     #include <device_mgmt/code_text.h>
 *     #include <stdio.h>
 *
 *     int main(void)
 *     {
 *         vor_char address[] = "192.168.1.10", mask[] = "255.255.255.0";
 *         vor_int32 code;
 *         if (vor_cfg_create_ipc_endpoint(200) != 0) {
 *             return 1;
 *         }
 *         vor_errno = 0;
 *         code = vor_cfg_set_ip_address(0, address, mask, 1);
 *         printf("%s\n", device_mgmt_code_text(code, vor_errno));
 *         vor_cfg_remove_ipc_endpoint();
 *         return code != 0;
 *     }
 *
 * Compile it with
 *
 *     cc front_end.c $(pkg-config --cflags --libs device_mgmt)
 *
 * which links -ldevice_mgmt and -lvorinfra, the platform's library. The headers
 * are C11 and C++11; device_mgmt.hpp, for C++20, wraps the calls. gcc and clang
 * take the headers as gnu89 and c99, too.
 *
 * "Passed to the manager unchanged" means that the library neither checks nor
 * interprets the value: the manager defines its codes, its unit and its
 * numbering. Most messages have signed numbers only: an unsigned one arrives as
 * the signed number with the same bits.
 *
 * Codes have names: vor_code, in device_mgmt/types.h. After
 * VOR_CODE_UNDELIVERED and VOR_CODE_UNREADABLE nobody knows whether the change
 * was made: a manager whose answer came too late has made it. VOR_CODE_REFUSED
 * means two things, and not every call sets vor_errno to 0 first. To tell them
 * apart, set vor_errno to 0 before the call: if it is not 0 afterwards, it is
 * the manager's status. Or call vor_cfg_get_ipc_endpoint: null means that
 * nothing was sent. Some calls have fewer codes: those of device_mgmt/gw.h return
 * VOR_CODE_UNREADABLE for VOR_CODE_UNDELIVERED; vor_cfg_get_reg_values, the Wi-Fi
 * monitor's and konfd's return -1 for every failure; three of device_mgmt/snmp.h
 * return what the platform's send returned.
 *
 * The platform decides how long a call may block: the library sets no limit
 * and cannot be interrupted. One-way calls do not wait for a manager.
 *
 * These calls print to standard output, and no other does:
 *
 * - vor_cfg_create_ipc_endpoint, when it fails
 * - vor_cfg_set_interface_ip, as it proceeds
 * - vor_cfg_set_mqtt_server_config, always
 * - vor_cfg_set_pcu_config_enable, when the manager accepted
 *
 * A call takes a message buffer of the platform for its request, and one for the
 * answer if there will be one. It gives them back before it returns, unless its
 * header says that it keeps one. What is kept is out of reach, and when no buffer is
 * left, calls return VOR_CODE_UNREADABLE; whether unbinding the endpoint frees
 * them is up to the platform.
 *
 * One thread at a time, whichever it is: the endpoint, the konfd socket and
 * vor_errno belong to the process and have no locks.
 *
 * Texts end with a zero byte; the library neither keeps nor changes them (they
 * are not const because the interface is old). A null text is checked for only
 * in device_mgmt/konfd.h. Elsewhere, one that is an address or a number is sent
 * as 0, one that is compared or copied (device_mgmt/debug.h) or converted for the
 * caller (device_mgmt/common.h) ends the program, and any other is passed to the
 * platform, which decides.
 *
 * Some names have no prefix and stay as they are: ip_aton, ENABLE, DISABLE
 * (device_mgmt/ip.h), LOG_INFO (device_mgmt/debug.h), SYSLOG_INFO and other
 * records. Where a header of your own has one of them, leave out device_mgmt.h
 * and include only the families you call. Hide a macro (<syslog.h> has
 * LOG_INFO) while you include them:
 *
 *     #pragma push_macro("LOG_INFO")
 *     #undef LOG_INFO
 *     #include <device_mgmt.h>
 *     #pragma pop_macro("LOG_INFO")
 *
 * Give a type or an enumerator, but never a call, another name meanwhile:
 *
 *     #define ENABLE VOR_ENABLE
 *     #include <device_mgmt/ip.h>
 *     #undef ENABLE
 */
#ifndef DEVICE_MGMT_H
#define DEVICE_MGMT_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/adc.h>
#include <device_mgmt/can.h>
#include <device_mgmt/common.h>
#include <device_mgmt/debug.h>
#include <device_mgmt/devicename.h>
#include <device_mgmt/env.h>
#include <device_mgmt/gpio.h>
#include <device_mgmt/gsm.h>
#include <device_mgmt/gw.h>
#include <device_mgmt/hostname.h>
#include <device_mgmt/ip.h>
#include <device_mgmt/konfd.h>
#include <device_mgmt/lora.h>
#include <device_mgmt/modbus.h>
#include <device_mgmt/mqtt.h>
#include <device_mgmt/pcu.h>
#include <device_mgmt/sensor.h>
#include <device_mgmt/serial.h>
#include <device_mgmt/snmp.h>
#include <device_mgmt/sub1g.h>
#include <device_mgmt/svc.h>
#include <device_mgmt/syslog.h>
#include <device_mgmt/time.h>
#include <device_mgmt/towermon.h>
#include <device_mgmt/types.h>
#include <device_mgmt/version.h>
#include <device_mgmt/wifimonitor.h>

#endif
