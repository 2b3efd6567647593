#include "tables/managers.hpp"

#include <algorithm>

#include <fmt/core.h>

#include "tables/families.hpp"

namespace vorsim::tables {

std::string manager_key(std::uint16_t sap)
{
    const auto found = std::ranges::find(managers, sap, &Manager::sap);
    return found != managers.end() ? std::string(found->name) : fmt::format("sap {}", sap);
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

} // namespace vorsim::tables
