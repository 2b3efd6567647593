#include "tables/managers.hpp"

#include <algorithm>

#include <fmt/core.h>

#include "tables/families.hpp"

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

std::span<const ListedRow> all_rows()
{
    static const std::vector<ListedRow> all = [] {
        std::vector<ListedRow> rows;
        for (const Family* family : all_families()) {
            for (const MessageRow& row : family->rows) {
                const std::int32_t manager = row.exchange.manager;
                rows.push_back({&row, manager == family_manager ? family->sap : manager});
            }
        }
        return rows;
    }();
    return all;
}

std::vector<const MessageRow*> rows_of(std::uint32_t id, std::optional<std::uint16_t> sap)
{
    std::vector<const MessageRow*> rows;
    for (const ListedRow& listed : all_rows()) {
        if (listed.row->exchange.id == id && (!sap || listed.serves(*sap))) {
            rows.push_back(listed.row);
        }
    }
    return rows;
}

} // namespace vorsim
