// The library's outcome strips, end to end: every call under a fault of vorsim's for each column.
#include <algorithm>
#include <iterator>
#include <sstream>

#include <device_mgmt/common.h>
#include <gtest/gtest.h>

#include "calls/strips.hpp"
#include "client/ask.hpp"
#include "processes.hpp"
#include "rows_alone.hpp"
#include "text/json.hpp"

namespace {

// The strips' columns that a rule can bring about.
struct Column {
    std::size_t at;
    const char* rule;
};

constexpr Column columns[] = {
    {5, "any: refuse"},    {7, "any: id low"},    {8, "any: id high"},   {9, "any: no payload"},
    {10, "any: status 7"}, {11, "any: status 1"}, {12, "any: status 0"},
};

constexpr std::size_t first_status = 10;

// What the call returns there; nothing where the fault does not concern it.
std::string returned_in(std::string_view strip, std::size_t column)
{
    std::istringstream stream(std::string(std::ranges::find(strips, strip, &Strip::name)->cells));
    const std::vector<std::string> cells{std::istream_iterator<std::string>(stream), {}};
    const std::string& cell = cells.at(column) == "." && column >= first_status ? cells.back() : cells.at(column);
    return cell == "." ? "" : cell.substr(0, cell.find(':'));
}

TEST(strips, returned_codes_under_vorsim_faults)
{
    const processes::Workplace place;
    place.enter();
    const processes::Gateway gateway(place, {});
    const auto made = [](const Row& row) {
        EXPECT_EQ(0, vor_cfg_create_ipc_endpoint(200));
        std::string returned = row.make();
        vor_cfg_remove_ipc_endpoint(); // what the call has kept is given back
        return returned;
    };
    ASSERT_FALSE(rows_alone().empty());
    std::vector<std::string> undisturbed;
    for (const Row& row : rows_alone()) {
        undisturbed.push_back(made(row));
    }
    for (const Column& column : columns) {
        vorsim::client::ask("fault clear");
        vorsim::client::ask("fault add " + std::string(column.rule));
        for (std::size_t at = 0; at < undisturbed.size(); ++at) {
            const Row& row = rows_alone()[at];
            const std::string returned = returned_in(row.strip, column.at);
            EXPECT_EQ(returned.empty() ? undisturbed[at] : returned, made(row)) << row.call << " under " << column.rule;
        }
    }
}

} // namespace
