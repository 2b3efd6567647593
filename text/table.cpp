#include "text/table.hpp"

#include <algorithm>

#include "text/text.hpp"

namespace vor {

namespace {

constexpr std::size_t min_last_width = 24; // of the last column beside the others
constexpr std::size_t own_line = 10;       // where it begins on a line of its own

} // namespace

void Table::fit(const Cells& row)
{
    widths_.resize(std::max(widths_.size(), row.size() - 1));
    for (std::size_t i = 0; i + 1 < row.size(); i++) {
        widths_[i] = std::max(widths_[i], std::min(characters_in(row[i].text), screen_.width / 2));
    }
}

// One blank after the first column, two after the others.
std::size_t Table::start_of(std::size_t column) const
{
    std::size_t start = 0;
    for (std::size_t i = 0; i < column && i < widths_.size(); i++) {
        start += widths_[i] + (i == 0 ? 1 : 2);
    }
    return start;
}

std::string Table::text_of(const Cells& row) const
{
    std::string text;
    std::size_t at = 0;
    const auto pad_to = [&](std::size_t column) {
        text.append(column - at, ' ');
        at = column;
    };
    for (std::size_t i = 0; i + 1 < row.size(); i++) {
        pad_to(i == 0 ? 0 : std::max(start_of(i), at + (i == 1 ? 1 : 2)));
        text += screen_.painted(row[i].text, row[i].color);
        at += characters_in(row[i].text);
    }
    const Cell& last = row.back();
    if (last.text.empty()) {
        return text + '\n';
    }
    std::size_t start = start_of(row.size() - 1);
    start = start + min_last_width > screen_.width ? own_line : start;
    if (at + 1 > start) {
        text += '\n';
        at = 0;
    }
    for (const std::string& line : wrapped(last.text, screen_.width - std::min(start, screen_.width))) {
        pad_to(start);
        text += screen_.painted(line, last.color) + '\n';
        at = 0;
    }
    return text;
}

} // namespace vor
