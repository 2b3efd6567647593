#include "gateway/readings.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/core.h>
#include <fnmatch.h>

#include "tables/families.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::gateway {
namespace {

// Null: unknown.
const tables::Reading* find(const std::string& name, std::vector<std::string>& known)
{
    for (const tables::Family* family : tables::all_families()) {
        for (const tables::Reading& reading : family->readings) {
            known.emplace_back(reading.name);
            if (fnmatch(known.back().c_str(), name.c_str(), 0) == 0) {
                return &reading;
            }
        }
    }
    return nullptr;
}

// The value as it is stored.
std::uint64_t value_in(std::string_view text, const std::string& name, const tables::Reading& reading)
{
    const auto number = vor::integer_in(text);
    const bool at_least = number && number->exact &&
                          (number->negative ? number->bounded() >= reading.least
                                            : std::cmp_greater_equal(number->magnitude, reading.least));
    if (!at_least || (!number->negative && number->magnitude > reading.most)) {
        throw std::runtime_error(fmt::format("{} must be {} to {}{}, not \"{}\"", name, reading.least, reading.most,
                                             reading.counts ? "" : " or wander", vor::escaped(text)));
    }
    return number->negative ? static_cast<std::uint64_t>(number->bounded()) : number->magnitude;
}

// "850", "860" and "wander" of "850, 860, then wander".
std::vector<std::string_view> items_of(std::string_view list)
{
    constexpr std::string_view then = "then ";
    std::vector<std::string_view> items;
    for (bool more = true; more;) {
        const std::size_t comma = list.find(',');
        more = comma != list.npos;
        std::string_view item = list.substr(0, comma);
        item.remove_prefix(std::min(item.find_first_not_of(' '), item.size()));
        item.remove_prefix(!more && !items.empty() && item.starts_with(then) ? then.size() : 0);
        items.push_back(item.substr(0, item.find_last_not_of(' ') + 1));
        list.remove_prefix(more ? comma + 1 : 0);
    }
    return items;
}

} // namespace

Setting parse_setting(std::string_view words)
{
    std::vector<std::string_view> items = items_of(words);
    const std::size_t blank = std::min(items[0].rfind(' '), items[0].size());
    const std::string name(items[0].substr(0, blank));
    items[0].remove_prefix(std::min(blank + 1, items[0].size()));
    const std::string shown = vor::joined(items, ", ");
    if (name == "counting") {
        const auto times = vor::number_in<std::uint64_t>(shown);
        if (!times || *times == 0 || *times > 1'000'000) {
            throw std::runtime_error(fmt::format("counting must be 1 to 1000000, not \"{}\"", vor::escaped(shown)));
        }
        return {[speed = *times](Measurements& measurements) { measurements.speed_up(speed); },
                fmt::format("counters run {} times as fast", *times)};
    }
    std::vector<std::string> known;
    const tables::Reading* const reading = find(name, known);
    if (reading == nullptr) {
        throw std::runtime_error(fmt::format(
            "unknown reading \"{}\"{}", vor::escaped(name),
            vor::suggestion(vor::nearest(name, known),
                            "expected temperature, port N polling_count, port N interrupt_count, adc N/N "
                            "polling_count, adc N/N interrupt_count, a transceiver register such as rssi, or "
                            "counting")));
    }
    const bool wanders = !reading->counts && items.back() == "wander";
    items.resize(items.size() - (wanders ? 1 : 0));
    if (items.empty()) {
        return {[name](Measurements& measurements) { measurements.release(name); }, fmt::format("{} wanders", name)};
    }
    std::vector<std::uint64_t> values;
    for (const std::string_view item : items) {
        values.push_back(value_in(item, name, *reading));
    }
    const bool released = wanders || reading->counts;
    return {[name, values, released](Measurements& measurements) { measurements.set(name, values, released); },
            fmt::format("{} set to {}", name, words.substr(name.size() + 1))};
}

std::vector<HeldReading> held_readings(const Measurements& measurements)
{
    std::vector<HeldReading> all;
    for (const Measurements::Held& held : measurements.held()) {
        std::vector<std::string> known;
        const tables::Reading* const reading = find(held.name, known);
        std::string text = held.name;
        for (const std::uint64_t value : held.values) {
            text += text.size() == held.name.size() ? " " : ", ";
            text += reading->least < 0 ? fmt::format("{}", static_cast<std::int64_t>(value)) : fmt::format("{}", value);
        }
        const std::string release = reading->counts ? "" : fmt::format("{} wander", held.name);
        all.push_back({text + (held.then_released && !reading->counts ? ", then wander" : ""), release});
    }
    return all;
}

} // namespace vorsim::gateway
