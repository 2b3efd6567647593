#include "gateway/state.hpp"

#include <cstring>

#include <fmt/core.h>

#include "tables/managers.hpp"

namespace vorsim {
namespace {

// What all settings may take, each with what it is kept in on top.
constexpr std::size_t most_bytes = 4 << 20;
constexpr std::size_t bytes_of_a_setting = 128;
constexpr std::size_t bytes_of_a_value = 64;

std::size_t size_of(const Decoded& decoded)
{
    std::size_t size = decoded.object.size() + bytes_of_a_setting;
    for (const Value& value : decoded.values) {
        size += value.name.size() + value.text.size() + bytes_of_a_value;
    }
    return size;
}

bool replaces(const Row& row, const Row& earlier)
{
    return row.slot.empty() ? earlier.call == row.call : earlier.slot == row.slot;
}

} // namespace

bool State::Natural::operator()(const std::string& left, const std::string& right) const
{
    return strverscmp(left.c_str(), right.c_str()) < 0;
}

std::size_t State::freed_by(const Decoded& decoded) const
{
    std::size_t freed = 0;
    if (const auto manager = managers_.find(decoded.sap); manager != managers_.end()) {
        if (const auto object = manager->second.find(decoded.object); object != manager->second.end()) {
            for (const Setting& setting : object->second) {
                freed += replaces(*decoded.row, *setting.row) ? setting.size : 0;
            }
        }
    }
    return freed;
}

bool State::has_room(const Decoded& decoded) const
{
    return size_ - freed_by(decoded) + size_of(decoded) <= most_bytes;
}

bool State::keep(const Decoded& decoded)
{
    if (!has_room(decoded)) {
        return false;
    }
    const std::size_t size = size_of(decoded);
    size_ += size - freed_by(decoded);
    Settings& settings = managers_[decoded.sap][decoded.object];
    std::erase_if(settings, [&](const Setting& setting) { return replaces(*decoded.row, *setting.row); });
    settings.push_back({decoded.row, decoded.values, size});
    return true;
}

std::optional<std::int32_t> State::latest(std::uint16_t sap, const std::string& object, std::string_view name) const
{
    const auto manager = managers_.find(sap);
    if (manager == managers_.end()) {
        return {};
    }
    const auto found = manager->second.find(object);
    if (found == manager->second.end()) {
        return {};
    }
    for (auto setting = found->second.rbegin(); setting != found->second.rend(); ++setting) {
        for (const Value& value : setting->values) {
            if (value.name == name && value.data.is_integer()) {
                return value.data.number<std::int32_t>();
            }
        }
    }
    return {};
}

std::string State::text() const
{
    std::string text;
    for (const auto& [sap, objects] : managers_) {
        text += fmt::format("{}\n", manager_label(sap));
        for (const auto& [object, settings] : objects) {
            text += fmt::format("  {}\n", object);
            for (const Setting& setting : settings) {
                const std::string values = line_of(setting.values);
                text += fmt::format("    {}{}{}\n", setting.row->call, values.empty() ? "" : "  ", values);
            }
        }
    }
    return text;
}

Json State::json() const
{
    Json all = Json::object();
    for (const auto& [sap, objects] : managers_) {
        Json by_object = Json::object();
        for (const auto& [object, settings] : objects) {
            Json& calls = by_object[object] = Json::object();
            for (const Setting& setting : settings) {
                calls[std::string(setting.row->call)] = json_of(setting.values);
            }
        }
        all[manager_key(sap)] = {{"sap", sap}, {"objects", std::move(by_object)}};
    }
    return all;
}

} // namespace vorsim
