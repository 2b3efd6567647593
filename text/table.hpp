// table.hpp: rows whose cells are aligned in columns.
#pragma once

#include <string>
#include <vector>

#include "text/screen.hpp"

namespace vor {

struct Cell {
    std::string text;
    Color color = Color::plain;
};

using Cells = std::vector<Cell>;

// Every column but the last is as wide as its widest cell, up to half the screen. The last is wrapped at the screen's
// width, and begins on a line of its own where a cell before it is wider than its column.
class Table {
public:
    explicit Table(const Screen& screen) : screen_(screen) {}

    // Widens the columns to fit a row.
    void fit(const Cells& row);
    // A row, its lines ended.
    std::string text_of(const Cells& row) const;

    const Screen& screen() const { return screen_; }

private:
    std::size_t start_of(std::size_t column) const;

    Screen screen_;
    std::vector<std::size_t> widths_; // of all columns but the last
};

} // namespace vor
