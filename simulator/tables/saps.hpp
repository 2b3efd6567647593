// saps.hpp: the managers' names and SAPs.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vorsim::tables {

struct Manager {
    std::uint16_t sap{};
    std::string_view name{};
};

inline constexpr auto managers = std::to_array<Manager>({
    {0, "system"},     {2, "platmgr"},      {3, "restmgr"},    {4, "gpiomgr"},    {5, "adcmgr"},     {7, "ethmgr"},
    {8, "sub1gmgr"},   {9, "svcmgr"},       {10, "datamgr"},   {12, "gsmmgr"},    {14, "sensormgr"}, {15, "mqttmgr"},
    {16, "serialmgr"}, {18, "wifimonitor"}, {19, "canmgr"},    {20, "modbusmgr"}, {21, "snmpmgr"},   {22, "ntpmgr"},
    {23, "pcumgr"},    {24, "loramgr"},     {240, "towermon"},
});

void no_such_manager(); // nowhere defined: an unknown name does not compile

consteval std::uint16_t sap_of(std::string_view name)
{
    for (const Manager& manager : managers) {
        if (manager.name == name) {
            return manager.sap;
        }
    }
    no_such_manager();
    return 0;
}

} // namespace vorsim::tables
