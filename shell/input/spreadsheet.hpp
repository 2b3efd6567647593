// spreadsheet.hpp: a spreadsheet saved as CSV: a row per site, and in the first line the names of the columns.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input/input_error.hpp"

namespace vorcfg::input {

class Spreadsheet {
public:
    struct Cell {
        std::string text;
        Place place;
    };
    struct Row {
        std::size_t line = 0;
        std::vector<Cell> cells{};
        std::optional<InputError> error{}; // where it has too few cells or too many
    };

    // By its suffix, .csv.
    static bool is_named(std::string_view path);
    // Throws an InputError with its place.
    explicit Spreadsheet(const std::string& path);

    const std::string& path() const { return path_; }
    const std::vector<Cell>& columns() const { return columns_; }
    // Those that are not empty.
    const std::vector<Row>& rows() const { return rows_; }
    // Whether the column's name can be that of a variable.
    static bool is_variable(const Cell& column);
    // The only one that has all of these values, each "COLUMN=VALUE". Throws an InputError.
    const Row& row_with(const std::vector<std::string>& conditions) const;

private:
    std::size_t column_of(std::string_view condition) const;

    const std::string path_;
    std::vector<Cell> columns_;
    std::vector<Row> rows_;
};

} // namespace vorcfg::input
