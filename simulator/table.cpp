#include "families.hpp"

#include <algorithm>

namespace vorsim {
namespace {

constexpr const Family* all_families[] = {
    &common, &ip,  &gw,     &syslog, &hostname, &env, &debug,       &svc, &mqtt, &snmp,   &time,     &gsm,
    &gpio,   &adc, &serial, &sensor, &sub1g,    &can, &wifimonitor, &pcu, &lora, &modbus, &towermon, &devicename,
};

constexpr Manager all_managers[] = {
    {0, "system"},     {2, "platmgr"},      {3, "restmgr"},    {4, "gpiomgr"},    {5, "adcmgr"},     {7, "ethmgr"},
    {8, "sub1gmgr"},   {9, "svcmgr"},       {10, "datamgr"},   {12, "gsmmgr"},    {14, "sensormgr"}, {15, "mqttmgr"},
    {16, "serialmgr"}, {18, "wifimonitor"}, {19, "canmgr"},    {20, "modbusmgr"}, {21, "snmpmgr"},   {22, "ntpmgr"},
    {23, "pcumgr"},    {24, "loramgr"},     {240, "towermon"},
};

} // namespace

std::span<const Family* const> families()
{
    return all_families;
}

std::span<const Manager> managers()
{
    return all_managers;
}

std::string_view manager_name(std::uint16_t sap)
{
    const auto* const found = std::ranges::find(all_managers, sap, &Manager::sap);
    return found == std::end(all_managers) ? std::string_view() : found->name;
}

} // namespace vorsim
