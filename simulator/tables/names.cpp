#include "tables/names.hpp"

#include <algorithm>
#include <set>

#include <arpa/inet.h>
#include <fmt/core.h>
#include <fnmatch.h>

#include "tables/managers.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::tables {
namespace {

using Names = std::vector<std::string>;

constexpr std::size_t most_patterns = 4;
constexpr std::size_t longest_name = 20'000; // an object may have a text of 4096 bytes, each of them shown as \x00

void expect_short(std::string_view what, std::string_view text)
{
    if (text.size() > longest_name) {
        throw NameError(fmt::format("{} must have at most {} bytes, not {}", what, longest_name, text.size()));
    }
}

std::string_view without_sap(std::string_view name)
{
    const bool has = name.starts_with("sap ") || name.starts_with("SAP ");
    return name.substr(has ? 4 : 0);
}

// Whether vorsim shows such a value of the field.
bool can_show(const Field& field, std::string_view text)
{
    if (field.display == Display::address) {
        in_addr address{};
        return text.size() < INET_ADDRSTRLEN && inet_pton(AF_INET, std::string(text).c_str(), &address) == 1;
    }
    if (field.kind == Kind::text) {
        return !text.empty();
    }
    const auto number = vor::number_in<std::int64_t>(text);
    const Range range = range_of(field);
    return number && fmt::format("{}", *number) == text && *number >= range.least && *number <= range.most;
}

bool fits(const MessageRow& row, std::string_view pattern, std::string_view text)
{
    const std::size_t open = pattern.find('{');
    const std::string_view literal = pattern.substr(0, open);
    if (!text.starts_with(literal)) {
        return false;
    }
    text.remove_prefix(literal.size());
    if (open == pattern.npos) {
        return text.empty();
    }
    const std::size_t close = pattern.find('}', open);
    const Field& field = *field_named(row, pattern.substr(open + 1, close - open - 1));
    const std::string_view rest = pattern.substr(close + 1);
    if (rest.empty()) {
        return can_show(field, text);
    }
    const std::string_view next = rest.substr(0, rest.find('{'));
    for (std::size_t end = text.find(next); end != text.npos; end = text.find(next, end + 1)) {
        if (can_show(field, text.substr(0, end)) && fits(row, rest, text.substr(end))) {
            return true;
        }
    }
    return false;
}

// "port N", or "interface 0" where the row is about that one alone.
std::string shown_object(const MessageRow& row)
{
    std::string object(row.object);
    for (std::size_t at = object.find('{'); at != object.npos; at = object.find('{')) {
        const std::size_t end = object.find('}', at);
        const Field& field = *field_named(row, object.substr(at + 1, end - at - 1));
        object.replace(at, end + 1 - at,
                       field.only_value                    ? std::to_string(*field.only_value)
                       : field.display == Display::address ? "ADDRESS"
                       : field.kind == Kind::text          ? "NAME"
                                                           : "N");
    }
    return object;
}

} // namespace

Range range_of(const Field& field)
{
    if (field.only_value) {
        return {*field.only_value, *field.only_value};
    }
    const unsigned bits = field.size() * 8U;
    if (field.display == Display::signed_number) {
        return {-(std::int64_t{1} << (bits - 1)), (std::int64_t{1} << (bits - 1)) - 1};
    }
    return {0, (std::int64_t{1} << bits) - 1};
}

const Field* field_named(const MessageRow& row, std::string_view name)
{
    const auto fields = row.layout.fields();
    const auto found = std::ranges::find(fields, name, &Field::name);
    return found != fields.end() ? &*found : nullptr;
}

std::optional<std::uint16_t> sap_named(std::string_view name)
{
    const auto found = std::ranges::find(managers, name, &Manager::name);
    return found != managers.end() ? std::optional(found->sap) : vor::number_in<std::uint16_t>(without_sap(name));
}

std::uint16_t checked_sap(std::string_view name, std::span<const std::string_view> others)
{
    const auto sap = sap_named(name);
    if (!sap) {
        Names known(others.begin(), others.end());
        for (const Manager& manager : managers) {
            known.emplace_back(manager.name);
        }
        throw NameError(fmt::format("unknown manager {}{}", vor::quoted(name),
                                    vor::suggestion(vor::nearest(name, known), "expected a name or SAP")));
    }
    return *sap;
}

bool same_call(const std::string& pattern, const std::string& other)
{
    return fnmatch(pattern.c_str(), other.c_str(), 0) == 0 || fnmatch(other.c_str(), pattern.c_str(), 0) == 0;
}

Selection::Selection()
{
    for (const ListedRow& listed : all_rows()) {
        rows_.push_back(listed.row);
    }
}

void Selection::of(std::uint16_t sap)
{
    rows_.clear();
    for (const ListedRow& listed : all_rows()) {
        if (listed.serves(sap)) {
            rows_.push_back(listed.row);
        }
    }
    whose_ = manager_key(sap);
    free_ = std::ranges::find(managers, sap, &Manager::sap) == managers.end();
}

void Selection::call(const std::string& name)
{
    expect_short("a call", name);
    const auto is_named = [&name](const MessageRow* row) { return same_call(name, std::string(row->call)); };
    if (std::ranges::none_of(rows_, is_named)) {
        std::set<std::string> known;
        std::set<std::string> receivers;
        for (const MessageRow* row : rows_) {
            known.emplace(row->call);
        }
        for (const ListedRow& listed : all_rows()) {
            if (is_named(listed.row)) {
                receivers.insert(manager_key(static_cast<std::uint16_t>(listed.manager)));
            }
        }
        if (!receivers.empty()) {
            throw NameError(fmt::format("{} is sent to {}, not to {}", vor::escaped(name),
                                        vor::joined(receivers, " and "), whose_));
        }
        const Names names(known.begin(), known.end());
        throw NameError(
            fmt::format("unknown call {}{}", vor::quoted(name),
                        vor::suggestion(vor::nearest(name, names), "expected a call that sends a message")));
    }
    std::erase_if(rows_, [&](const MessageRow* row) { return !is_named(row); });
    whose_ = name;
    free_ = false;
}

void Selection::object(std::string_view text)
{
    expect_short("an object", text);
    const auto is_about = [text](const MessageRow* row) { return fits(*row, row->object, text); };
    if (free_) {
        return;
    }
    if (std::ranges::none_of(rows_, is_about)) {
        throw NameError(fmt::format("unknown object {}{}{}; expected {}", vor::quoted(text),
                                    whose_.empty() ? "" : " of ", whose_, objects(text)));
    }
    std::erase_if(rows_, [&](const MessageRow* row) { return !is_about(row); });
}

std::string Selection::objects(std::string_view typed) const
{
    std::set<std::string> all;
    std::set<std::string> kinds;
    for (const MessageRow* row : rows_) {
        all.insert(shown_object(*row));
        kinds.emplace(row->object.substr(0, row->object.find(" {")));
    }
    if (all.size() > most_patterns) {
        const Names known(kinds.begin(), kinds.end());
        const Names near = vor::nearest(typed.substr(0, typed.find_first_of("0123456789")), known);
        std::erase_if(all, [&near](const std::string& object) {
            return std::ranges::none_of(near, [&](const auto& kind) { return object.starts_with(kind); });
        });
    }
    Names shown;
    for (const std::string& object : all) {
        shown.push_back(vor::quoted(object));
    }
    shown.resize(std::min(shown.size(), most_patterns));
    return shown.empty() ? "an object as vorsim prints it" : vor::alternatives(shown);
}

void Selection::field(std::string_view name) const
{
    std::set<std::string> known;
    for (const MessageRow* row : rows_) {
        if (!row->layout.lead.empty()) {
            known.emplace(row->layout.lead);
        }
        for (const Field& field : row->layout.fields()) {
            known.emplace(field.name);
        }
    }
    if (!known.contains(std::string(name))) {
        const Names names(known.begin(), known.end());
        const std::string otherwise = names.empty() ? "" : "expected " + vor::alternatives(names);
        throw NameError(fmt::format("{} has no value {}{}", whose_, vor::quoted(name),
                                    vor::suggestion(vor::nearest(name, names), otherwise)));
    }
}

} // namespace vorsim::tables
