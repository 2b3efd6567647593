// families.hpp: the tables of all managers, one file each in families/.
//
// A file there defines `extern const Family STEM`; the build lists the files.
#pragma once

#include <span>

#include "tables/row.hpp"

namespace vorsim::tables {

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

} // namespace vorsim::tables

// A family's file is written in the words of the tables.
namespace vorsim::families {
using namespace tables;
} // namespace vorsim::families
