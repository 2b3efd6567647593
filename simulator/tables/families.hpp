// families.hpp: the tables of all managers, one file each in families/.
//
// A file there defines `extern const Family STEM`; the build lists the files.
#pragma once

#include <span>

#include "tables/row.hpp"

namespace vorsim {

struct Family {
    std::uint16_t sap; // of the rows without a manager of their own
    std::span<const MessageRow> rows;
    std::span<const Reading> readings;

    consteval Family(std::string_view manager, std::span<const MessageRow> all, std::span<const Reading> moving = {})
        : sap(sap_of(manager)), rows(all), readings(moving)
    {
    }
};

std::span<const Family* const> all_families();

} // namespace vorsim
