#include "rows/rule.hpp"

#include <algorithm>
#include <arpa/inet.h>

#include <fmt/core.h>

namespace vorcfg::rows {

namespace {

std::optional<std::uint32_t> address_in(const std::string& text)
{
    in_addr address{};
    return inet_pton(AF_INET, text.c_str(), &address) == 1 ? std::optional(ntohl(address.s_addr)) : std::nullopt;
}

} // namespace

std::string SiteLine::text(std::string_view argument) const
{
    const auto arguments = row->arguments();
    const auto at = std::ranges::find(arguments, argument, &Argument::name) - arguments.begin();
    const Value& value = values[static_cast<std::size_t>(at)];
    return value.text.empty() && value.given && arguments[static_cast<std::size_t>(at)].is_number()
               ? std::to_string(value.number)
               : value.text;
}

std::optional<std::uint32_t> SiteLine::address(std::string_view argument) const
{
    return address_in(text(argument));
}

SiteLines::SiteLines(std::span<const SiteLine> lines)
{
    for (const SiteLine& line : lines) {
        const auto arguments = line.row->arguments();
        const auto object = std::ranges::find_if(arguments, &Argument::is_object);
        const std::string name = object != arguments.end() ? line.text(object->name) : "";
        last_[{line.row->family, line.row->name, name}] = &line;
    }
}

const SiteLine* SiteLines::find(const Family* family, std::string_view call, const std::string& object) const
{
    const auto found = last_.find({family, call, object});
    return found != last_.end() ? found->second : nullptr;
}

std::vector<Finding> findings_about(const SiteLine& line, const SiteLines& site)
{
    std::vector<Finding> findings;
    for (const Rule rule : line.row->rules) {
        if (Finding finding = rule(line, site); !finding.text.empty()) {
            findings.push_back(std::move(finding));
        }
    }
    return findings;
}

std::vector<Finding> findings_about(const Row& row, std::span<const Value> values)
{
    std::vector<Finding> findings;
    const auto arguments = row.arguments();
    for (std::size_t i = 0; i < std::min(arguments.size(), values.size()); i++) {
        const std::string text = arguments[i].doubt != nullptr && values[i].given ? arguments[i].doubt(values[i]) : "";
        if (!text.empty()) {
            findings.push_back({fmt::format("{} {}", arguments[i].name, text)});
        }
    }
    return findings;
}

bool has_rules(const Family& family)
{
    return std::ranges::any_of(family.rows, [](const Row& row) { return !row.rules.empty(); });
}

std::string doubt_about_port(const Value& value)
{
    return value.number == 0 ? "is 0" : "";
}

std::string doubt_about_mask(const Value& value)
{
    const std::uint32_t hosts = ~address_in(value.text).value_or(0);
    return (hosts & (hosts + 1)) != 0 ? fmt::format("{} has holes", value.text) : "";
}

} // namespace vorcfg::rows
