#include "input/spreadsheet.hpp"

#include <algorithm>

#include <fmt/core.h>

#include "input/words.hpp"
#include "text/nearest.hpp"
#include "text/text.hpp"

namespace vorcfg::input {

namespace {

using Cell = Spreadsheet::Cell;
using Row = Spreadsheet::Row;

[[noreturn]] void fail_at(const Place& place, std::string why, std::string hint = {})
{
    throw InputError{.text = std::move(why), .place = place, .hint = std::move(hint)};
}

// What there is more of in the first line that is not empty.
char separator_in(std::string_view text)
{
    int commas = 0;
    bool quoted = false;
    bool begun = false;
    for (const char c : text) {
        if (c == '\n' && begun && !quoted) {
            break;
        }
        quoted = quoted != (c == '"');
        begun = begun || (c != '\n' && c != '\r');
        commas += quoted ? 0 : (c == ',' ? 1 : 0) - (c == ';' ? 1 : 0);
    }
    return commas < 0 ? ';' : ',';
}

// Reads the rows of a text.
class RowReader {
public:
    RowReader(std::string_view text, const std::string& path)
        : text_(vor::without_mark(text)), path_(path), separator_(separator_in(text_))
    {
    }

    // None at the end. Rows without any text are skipped.
    std::optional<Row> next()
    {
        while (at_ < text_.size()) {
            Row row = read_row();
            if (!std::ranges::all_of(row.cells, &std::string::empty, &Cell::text)) {
                return row;
            }
        }
        return std::nullopt;
    }

private:
    bool is_next(char c) const { return text_.substr(at_).starts_with(c); }
    bool is_line_end() const { return at_ == text_.size() || is_next('\n') || text_.substr(at_).starts_with("\r\n"); }
    Place place() const { return {path_, line_, vor::characters_in(text_.substr(begin_, at_ - begin_)) + 1}; }

    Row read_row()
    {
        Row row{line_};
        row.cells.push_back(read_cell());
        while (is_next(separator_)) {
            at_++;
            row.cells.push_back(read_cell());
        }
        if (!is_line_end()) {
            fail_at(place(), "unexpected text after the closing double quote",
                    "a double quote within a cell is written twice");
        }
        at_ = text_.find('\n', at_);
        begin_line(std::min(at_, text_.size() - 1) + 1);
        at_ = begin_;
        return row;
    }

    Cell read_cell()
    {
        Cell cell{{}, place()};
        is_next('"') ? read_quoted(cell) : read_plain(cell);
        if (!vor::is_utf8(cell.text) || cell.text.find('\0') != std::string::npos) {
            fail_at(cell.place, "not a text in UTF-8", "save the spreadsheet as CSV in UTF-8");
        }
        return cell;
    }

    void read_plain(Cell& cell)
    {
        for (; !is_next(separator_) && !is_line_end(); at_++) {
            if (is_next('"')) {
                fail_at(place(), "unexpected double quote in a cell",
                        "put the whole cell in double quotes, and write each within it twice");
            }
            cell.text += text_[at_];
        }
    }

    void begin_line(std::size_t at)
    {
        begin_ = at;
        line_++;
    }

    void read_quoted(Cell& cell)
    {
        while (true) {
            for (at_++; at_ < text_.size() && !is_next('"'); at_++) {
                cell.text += text_[at_];
                if (is_next('\n')) {
                    begin_line(at_ + 1);
                }
            }
            if (at_ == text_.size()) {
                fail_at(cell.place, "this double quote is not closed");
            }
            at_++;
            if (!is_next('"')) {
                return;
            }
            cell.text += '"';
        }
    }

    const std::string_view text_;
    const std::string& path_;
    const char separator_;
    std::size_t at_ = 0;
    std::size_t begin_ = 0; // of the line
    std::size_t line_ = 1;
};

} // namespace

bool Spreadsheet::is_named(std::string_view path)
{
    constexpr std::string_view suffix = ".csv";
    return path.size() > suffix.size() && vor::folded(path.substr(path.size() - suffix.size())) == suffix;
}

bool Spreadsheet::is_variable(const Cell& column)
{
    return !column.text.empty() && vor::name_length(column.text) == column.text.size();
}

Spreadsheet::Spreadsheet(const std::string& path) : path_(path)
{
    const std::string text = content_of(path);
    RowReader reader(text, path_);
    auto header = reader.next();
    if (!header) {
        fail_at({path_, 1, 1}, "expected the names of the columns");
    }
    columns_ = std::move(header->cells);
    for (auto column = columns_.begin(); column != columns_.end(); ++column) {
        const auto same = std::ranges::find(columns_.begin(), column, column->text, &Cell::text);
        if (same != column && !column->text.empty()) {
            fail_at(column->place, fmt::format("two columns are named \"{}\"", column->text));
        }
    }
    while (auto row = reader.next()) {
        if (const std::size_t cells = row->cells.size(); cells != columns_.size()) {
            row->error = InputError{.text = fmt::format("expected {}, as the first line has, not {}",
                                                        vor::counted(columns_.size(), "cell"), cells),
                                    .place = row->cells[std::min(cells, columns_.size() + 1) - 1].place};
        }
        rows_.push_back(std::move(*row));
    }
    if (rows_.empty()) {
        fail_at(columns_.front().place, "expected rows below the names of the columns");
    }
}

namespace {

std::string_view value_in(std::string_view condition)
{
    return condition.substr(vor::named_length(condition) + 1);
}

} // namespace

std::size_t Spreadsheet::column_of(std::string_view condition) const
{
    const std::string_view name = condition.substr(0, vor::named_length(condition));
    if (name.empty()) {
        throw InputError{fmt::format("--row must be COLUMN=VALUE, not {}", vor::quoted(condition))};
    }
    const auto column = std::ranges::find(columns_, name, &Cell::text);
    if (column == columns_.end()) {
        std::vector<std::string> names;
        for (const Cell& each : columns_) {
            if (is_variable(each)) {
                names.push_back(each.text);
            }
        }
        fail_at(columns_.front().place,
                fmt::format("no column \"{}\"{}", name,
                            vor::suggestion(vor::nearest(name, names), "expected " + vor::alternatives(names))));
    }
    return static_cast<std::size_t>(column - columns_.begin());
}

const Row& Spreadsheet::row_with(const std::vector<std::string>& conditions) const
{
    const auto has_all = [&](const Row& row) {
        return std::ranges::all_of(conditions, [&](const std::string& condition) {
            const std::size_t column = column_of(condition);
            return column < row.cells.size() && row.cells[column].text == value_in(condition);
        });
    };
    const std::string shown = vor::joined(conditions, ", ");
    const std::size_t column = column_of(conditions.front());
    const auto found = std::ranges::find_if(rows_, has_all);
    if (found == rows_.end()) {
        fail_at(columns_[column].place, fmt::format("no row has {}", shown));
    }
    if (const auto other = std::find_if(found + 1, rows_.end(), has_all); other != rows_.end()) {
        fail_at(other->cells[column].place,
                fmt::format("line {} has {}, too; --row must match one row", found->line, shown));
    }
    if (found->error) {
        throw InputError(*found->error);
    }
    return *found;
}

} // namespace vorcfg::input
