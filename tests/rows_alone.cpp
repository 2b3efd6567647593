#include "rows_alone.hpp"

#include <algorithm>
#include <iterator>

namespace {

std::vector<Row>& taken()
{
    static std::vector<Row> rows;
    return rows;
}

} // namespace

Calls::Calls(const char*, std::vector<Row> rows)
{
    std::erase_if(rows, [](const Row& row) { return row.strip.empty(); });
    std::ranges::move(rows, std::back_inserter(taken()));
}

const std::vector<Row>& rows_alone()
{
    return taken();
}

std::string shown(vor_int32 code)
{
    return std::to_string(code);
}

std::string shown(const void* record)
{
    return record == nullptr ? "null" : "answer";
}

char* operator""_t(const char* text, size_t)
{
    return const_cast<char*>(text);
}
