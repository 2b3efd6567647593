#include "gateway/state.hpp"

#include <cstring>
#include <utility>

#include <fmt/core.h>

#include "tables/managers.hpp"
#include "tables/row.hpp"

namespace vorsim::gateway {
namespace {

// Of all settings together, with their overhead.
constexpr std::size_t most_bytes = 4 << 20;
constexpr std::size_t bytes_of_a_setting = 128;
constexpr std::size_t bytes_of_a_value = 64;

std::size_t size_of(const std::string& object, const std::vector<values::Value>& values)
{
    std::size_t size = object.size() + bytes_of_a_setting;
    for (const values::Value& value : values) {
        size += value.name.size() + value.text.size() + bytes_of_a_value;
    }
    return size;
}

bool replaces(const tables::MessageRow& row, const tables::MessageRow& earlier)
{
    return row.slot.empty() ? earlier.call == row.call : earlier.slot == row.slot;
}

} // namespace

bool State::Natural::operator()(const std::string& left, const std::string& right) const
{
    return strverscmp(left.c_str(), right.c_str()) < 0;
}

const State::Settings* State::held(std::uint16_t sap, const std::string& object) const
{
    const auto manager = managers_.find(sap);
    if (manager == managers_.end()) {
        return nullptr;
    }
    const auto found = manager->second.find(object);
    return found == manager->second.end() ? nullptr : &found->second;
}

std::size_t State::size_with(const Decoded& decoded) const
{
    std::size_t size = size_ + size_of(decoded.object, decoded.values);
    if (const Settings* const settings = held(decoded.sap, decoded.object)) {
        for (const Setting& setting : *settings) {
            size -= replaces(*decoded.row, *setting.row) ? size_of(decoded.object, setting.values) : 0;
        }
    }
    return size;
}

bool State::has_room(const Decoded& decoded) const
{
    return size_with(decoded) <= most_bytes;
}

bool State::keep(Decoded decoded)
{
    if (!has_room(decoded)) {
        return false;
    }
    size_ = size_with(decoded);
    Settings& settings = managers_[decoded.sap][decoded.object];
    std::erase_if(settings, [&](const Setting& setting) { return replaces(*decoded.row, *setting.row); });
    settings.push_back({decoded.row, std::move(decoded.values)});
    return true;
}

std::optional<std::int32_t> State::latest(std::uint16_t sap, const std::string& object, std::string_view name) const
{
    const Settings* const settings = held(sap, object);
    if (settings == nullptr) {
        return {};
    }
    for (auto setting = settings->rbegin(); setting != settings->rend(); ++setting) {
        for (const values::Value& value : setting->values) {
            const auto* const number = value.held<std::int64_t>();
            if (value.name == name && number != nullptr && std::in_range<std::int32_t>(*number)) {
                return static_cast<std::int32_t>(*number);
            }
        }
    }
    return {};
}

std::string State::text() const
{
    std::string text;
    for (const auto& [sap, objects] : managers_) {
        text += fmt::format("{}\n", tables::manager_key(sap));
        for (const auto& [object, settings] : objects) {
            text += fmt::format("  {}\n", object);
            for (const Setting& setting : settings) {
                const std::string values = values_text(setting.values);
                text += fmt::format("    {}{}{}\n", setting.row->call, values.empty() ? "" : "  ", values);
            }
        }
    }
    return text;
}

} // namespace vorsim::gateway
