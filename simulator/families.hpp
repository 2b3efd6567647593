/* families.hpp: every family's table, each defined in the file of its stem. */
#pragma once

#include "table.hpp"

namespace vorsim {

extern const Family adc, can, common, debug, devicename, env, gpio, gsm, gw, hostname, ip, lora, modbus, mqtt, pcu,
    sensor, serial, snmp, sub1g, svc, syslog, time, towermon, wifimonitor;

} // namespace vorsim
