// commands.hpp: the rows of every family.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "row.hpp"

namespace vorcfg {

std::span<const Row> adc_rows();
std::span<const Row> can_rows();
std::span<const Row> common_rows();
std::span<const Row> debug_rows();
std::span<const Row> devicename_rows();
std::span<const Row> env_rows();
std::span<const Row> gpio_rows();
std::span<const Row> gsm_rows();
std::span<const Row> gw_rows();
std::span<const Row> hostname_rows();
std::span<const Row> ip_rows();
std::span<const Row> konfd_rows();
std::span<const Row> lora_rows();
std::span<const Row> modbus_rows();
std::span<const Row> mqtt_rows();
std::span<const Row> pcu_rows();
std::span<const Row> sensor_rows();
std::span<const Row> serial_rows();
std::span<const Row> snmp_rows();
std::span<const Row> sub1g_rows();
std::span<const Row> svc_rows();
std::span<const Row> syslog_rows();
std::span<const Row> time_rows();
std::span<const Row> towermon_rows();
std::span<const Row> wifi_rows();
std::span<const Row> wifimonitor_rows();

struct Family {
    std::string_view name;
    std::string_view about;
    std::span<const Row> (*rows)();
    std::string_view header; // its header's stem, where that is not the name
};

std::span<const Family> families();

// Null, where there is none of that name.
const Family* family_named(std::string_view name);
const Row* row_named(std::string_view family, std::string_view name);

// A Complaint that names the nearest name, where one is near.
const Family& wanted_family(std::string_view name);
const Row& wanted_row(std::string_view family, std::string_view name);

} // namespace vorcfg
