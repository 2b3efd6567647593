#include "gateway/state.hpp"

#include <cstring>

#include <fmt/format.h>

#include "tables/managers.hpp"

namespace vorsim {

bool State::Natural::operator()(const std::string& left, const std::string& right) const
{
    return strverscmp(left.c_str(), right.c_str()) < 0;
}

void State::keep(const Decoded& decoded)
{
    const Row& row = *decoded.row;
    Settings& settings = managers_[decoded.sap][decoded.object];
    std::erase_if(settings, [&row](const Setting& setting) {
        return row.slot.empty() ? setting.row->call == row.call : setting.row->slot == row.slot;
    });
    settings.push_back({&row, decoded.values});
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
