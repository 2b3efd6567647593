/**
 * @file
 * device_mgmt.h: every call of the device-management library.
 *
 * Bind an endpoint first (device_mgmt/common.h), then call. A call sends one
 * message to the manager that owns the setting and returns when the manager
 * has answered or the platform has failed; it checks no argument unless its
 * header says so.
 *
 * "Passed to the manager unchanged" means that the library neither checks nor
 * interprets the value: the manager defines its codes, its unit and its
 * numbering.
 *
 * Codes have names: vor_code, in device_mgmt/types.h. VOR_CODE_REFUSED
 * means two things, and not every call sets vor_errno to 0 first. To tell them
 * apart, set vor_errno to 0 before the call: if it is not 0 afterwards, it is
 * the manager's status. Or call vor_cfg_get_ipc_endpoint: null means that
 * nothing was sent.
 *
 * The platform decides how long a call may block: the library sets no limit
 * and cannot be interrupted. One-way calls do not wait for a manager.
 *
 * One thread at a time, whichever it is: the endpoint, the konfd socket and
 * vor_errno belong to the process and have no locks.
 *
 * Texts end with a zero byte; the library neither keeps nor changes them (they
 * are not const because the interface is old). A null text is checked for only
 * in device_mgmt/konfd.h. Elsewhere, one that is an address or a number is sent
 * as 0, one that is compared or copied (device_mgmt/debug.h) ends the program,
 * and any other is passed to the platform, which decides.
 *
 * For C++ there is device_mgmt.hpp.
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
