// rule.hpp: what the library accepts, but no site intends. The rules are beside the rows that they are about.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "rows/row.hpp"

namespace vorcfg::rows {

// A call of a file, its arguments by their names.
struct SiteLine {
    const Row* row;
    std::vector<Value> values;
    std::size_t number;

    // As it was typed; empty where it was left out.
    std::string text(std::string_view argument) const;
    // A dotted quad, its first number in the highest byte.
    std::optional<std::uint32_t> address(std::string_view argument) const;
};

// All lines of a file that rules may look for.
class SiteLines {
public:
    explicit SiteLines(std::span<const SiteLine> lines);

    // The last one with this call of the family, about this object; null: there is none.
    const SiteLine* find(const Family* family, std::string_view call, const std::string& object) const;

private:
    using Key = std::tuple<const Family*, std::string_view, std::string>;
    std::map<Key, const SiteLine*> last_;
};

struct Finding {
    std::string text; // empty: nothing
    std::size_t other_line = 0;
};

// What is found about one call; about several, each is a rule.
std::vector<Finding> findings_about(const SiteLine& line, const SiteLines& site);
// About its arguments alone.
std::vector<Finding> findings_about(const Row& row, std::span<const Value> values);

// Whether a rule about a call of the family may look for it.
bool has_rules(const Family& family);

} // namespace vorcfg::rows
