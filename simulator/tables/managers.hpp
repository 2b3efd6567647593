// managers.hpp: the managers and their rows, all together.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tables/row.hpp"

namespace vorsim::tables {

// "ethmgr"; "sap 77" for a SAP without a manager.
std::string manager_key(std::uint16_t sap);

// A row and the manager that receives its message.
struct ListedRow {
    const MessageRow* row;
    std::int32_t manager; // or any

    bool serves(std::uint16_t sap) const { return manager == any_manager || manager == sap; }
};

std::span<const ListedRow> all_rows();
// The rows of a message id, for one manager or for all.
std::vector<const MessageRow*> rows_of(std::uint32_t id, std::optional<std::uint16_t> sap = {});

} // namespace vorsim::tables
