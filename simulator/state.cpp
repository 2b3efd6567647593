#include "state.hpp"

#include <cstring>

#include "text.hpp"

namespace vorsim {

bool State::Natural::operator()(const std::string& left, const std::string& right) const
{
    return strverscmp(left.c_str(), right.c_str()) < 0;
}

void State::keep(std::uint16_t sap, const Told& told)
{
    Settings& settings = managers_[sap][told.object];
    std::erase_if(settings, [&told](const Setting& setting) {
        return told.call->slot.empty() ? setting.call->name == told.call->name : setting.call->slot == told.call->slot;
    });
    settings.push_back({told.call, told.values});
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
        text += manager_label(sap) + "\n";
        for (const auto& [object, settings] : objects) {
            text += "  " + object + "\n";
            for (const Setting& setting : settings) {
                const std::string values = line_of(setting.values);
                text += "    " + std::string(setting.call->name) + (values.empty() ? "" : "  ") + values + "\n";
            }
        }
    }
    return text;
}

Json State::json() const
{
    Json managers = Json::object();
    for (const auto& [sap, objects] : managers_) {
        Json told = Json::object();
        for (const auto& [object, settings] : objects) {
            Json& calls = told[object] = Json::object();
            for (const Setting& setting : settings) {
                calls[std::string(setting.call->name)] = json_of(setting.values);
            }
        }
        managers[manager_key(sap)] = {{"sap", sap}, {"objects", std::move(told)}};
    }
    return managers;
}

} // namespace vorsim
