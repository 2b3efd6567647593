#include "gateway/state.hpp"

#include <cstring>

#include <fmt/format.h>

#include "tables/managers.hpp"

namespace vorsim {
namespace {

// What all settings may take, each with what it is kept in on top.
constexpr std::size_t most_bytes = 4 << 20;
constexpr std::size_t bytes_of_a_setting = 128;
constexpr std::size_t bytes_of_a_value = 64;

} // namespace

bool State::Natural::operator()(const std::string& left, const std::string& right) const
{
    return strverscmp(left.c_str(), right.c_str()) < 0;
}

bool State::keep(const Decoded& decoded)
{
    const Row& row = *decoded.row;
    std::size_t size = decoded.object.size() + bytes_of_a_setting;
    for (const Value& value : decoded.values) {
        size += value.name.size() + value.text.size() + bytes_of_a_value;
    }
    const auto is_replaced = [&row](const Setting& setting) {
        return row.slot.empty() ? setting.row->call == row.call : setting.row->slot == row.slot;
    };
    std::size_t freed = 0;
    if (const auto manager = managers_.find(decoded.sap); manager != managers_.end()) {
        if (const auto object = manager->second.find(decoded.object); object != manager->second.end()) {
            for (const Setting& setting : object->second) {
                freed += is_replaced(setting) ? setting.size : 0;
            }
        }
    }
    if (size_ - freed + size > most_bytes) {
        return false;
    }
    Settings& settings = managers_[decoded.sap][decoded.object];
    std::erase_if(settings, is_replaced);
    settings.push_back({&row, decoded.values, size});
    size_ += size - freed;
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
            if (value.name == name && value.data.is_number()) {
                return value.data.get<std::int32_t>();
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
