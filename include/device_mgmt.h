/**
 * @file
 * device_mgmt.h: every call of the device-management library.
 *
 * Bind an endpoint first (device_mgmt/common.h), then call. A call sends one
 * message to the manager that owns the setting and returns when the manager
 * has answered or the platform has failed; it checks no argument unless its
 * header says so. One thread at a time.
 *
 * "Passed to the manager as it is" means that the library neither checks nor
 * interprets the value: its codes and units are the manager's.
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
