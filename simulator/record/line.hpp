// line.hpp: a record as one line for people.
//
//   status 0   canmgr  vor_cfg_set_can_id  port 1: can_id=257 option=1  [fault 1: late 4s]
//
// Its columns always come in this order, separated by two or more spaces: the verdict, the manager, the call (the id
// of an unknown message, the client of konfd), the object and its values. Only the last one can hold two spaces in a
// row.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "text/screen.hpp"
#include "values/record.hpp"

namespace vorsim::record {

// The line as it is recorded.
std::string line_of(const values::Record& record);

inline constexpr std::size_t verdict_width = 9;

struct Columns {
    std::string verdict;
    std::string manager;
    std::string call;
    std::string text;
};
// Of a recorded line; all but the text are empty where it is of an earlier version.
Columns columns_of(std::string_view line);

// "13:34:09.142" for a record's time.
std::string local_time(const std::string& utc);

// How recorded lines are shown.
struct LineStyle {
    vor::Screen screen;
    bool ids = false; // SAP and message id after the manager
};

// The record's line after a stamp; by default, at a terminal, the local time.
std::string shown(const values::Record& record, const LineStyle& style, std::optional<std::string> stamp = {});

} // namespace vorsim::record
