#include "tables/managers.hpp"

#include <fmt/core.h>

namespace vorsim {
namespace {

// Empty for a SAP that is no manager's.
std::string_view name_of(std::uint16_t sap)
{
    const auto found = std::ranges::find(managers, sap, &Manager::sap);
    return found == managers.end() ? std::string_view() : found->name;
}

} // namespace

std::string manager_label(std::uint16_t sap)
{
    const std::string_view name = name_of(sap);
    return fmt::format("{}({})", name.empty() ? "sap" : name, sap);
}

std::string manager_key(std::uint16_t sap)
{
    const std::string_view name = name_of(sap);
    return name.empty() ? fmt::format("sap {}", sap) : std::string(name);
}

} // namespace vorsim
