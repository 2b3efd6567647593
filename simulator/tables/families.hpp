// families.hpp: the tables of all managers, one file each in families/.
//
// A file there defines `extern const Family STEM`; the build lists the files.
#pragma once

#include <span>

#include "tables/row.hpp"

namespace vorsim {

class Family {
public:
    // The manager of every row that names none itself.
    consteval Family(std::string_view manager, std::span<const Row> rows, std::span<const Reading> readings = {})
        : sap_(sap_of(manager)), rows_(rows), readings_(readings)
    {
    }

    std::span<const Row> rows() const { return rows_; }
    std::span<const Reading> readings() const { return readings_; }
    // Of one of its rows: a SAP, or any.
    std::int32_t manager_of(const Row& row) const
    {
        return row.exchange.manager == family_manager ? sap_ : row.exchange.manager;
    }

private:
    std::uint16_t sap_;
    std::span<const Row> rows_;
    std::span<const Reading> readings_;
};

std::span<const Family* const> all_families();

} // namespace vorsim
