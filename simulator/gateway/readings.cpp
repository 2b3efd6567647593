#include "gateway/readings.hpp"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <vector>

#include <fmt/core.h>
#include <fnmatch.h>

#include "tables/families.hpp"
#include "text/nearest.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

std::vector<const Reading*> all_readings()
{
    std::vector<const Reading*> all;
    for (const Family* family : all_families()) {
        for (const Reading& reading : family->readings()) {
            all.push_back(&reading);
        }
    }
    return all;
}

std::vector<std::string> names()
{
    std::vector<std::string> names;
    for (const Reading* reading : all_readings()) {
        names.emplace_back(reading->name);
    }
    return names;
}

const Reading* find(const std::string& name)
{
    const auto all = all_readings();
    const auto found = std::ranges::find_if(all, [&name](const Reading* reading) {
        return fnmatch(std::string(reading->name).c_str(), name.c_str(), 0) == 0;
    });
    return found == all.end() ? nullptr : *found;
}

template <class Number>
bool read(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
}

} // namespace

std::string set_reading(std::string_view words, Measurements* measurements)
{
    const std::size_t blank = std::min(words.rfind(' '), words.size());
    const std::string name(words.substr(0, blank));
    const std::string_view value = words.substr(std::min(blank + 1, words.size()));
    if (name == "counting") {
        std::uint64_t times = 0;
        if (!read(value, times) || times == 0 || times > 1'000'000) {
            throw std::runtime_error(fmt::format("counting is \"{}\": how many times as fast is expected, 1 to 1000000",
                                                 vor::escaped(value)));
        }
        if (measurements != nullptr) {
            measurements->speed_up(times);
        }
        return fmt::format("counters count {} times as fast", times);
    }
    const Reading* const reading = find(name);
    if (reading == nullptr) {
        throw std::runtime_error(fmt::format(
            "no reading \"{}\"{}", vor::escaped(name),
            vor::suggestion(vor::nearest(name, names()),
                            "there are temperature, port N polling_count, port N interrupt_count, adc N/N "
                            "polling_count, adc N/N interrupt_count, the transceiver's registers such as rssi, and "
                            "counting")));
    }
    if (value == "wander") {
        if (measurements != nullptr) {
            measurements->let_go(name);
        }
        return fmt::format("{} wanders", name);
    }
    std::int64_t number = 0;
    std::uint64_t large = 0;
    const bool is_small = read(value, number) && number >= reading->least &&
                          (number < 0 || static_cast<std::uint64_t>(number) <= reading->most);
    if (!is_small && !(read(value, large) && large <= reading->most)) {
        throw std::runtime_error(fmt::format("{} is \"{}\": a number from {} to {} is expected{}", name,
                                             vor::escaped(value), reading->least, reading->most,
                                             reading->counts ? "" : ", or wander"));
    }
    if (measurements != nullptr) {
        measurements->set(name, is_small ? static_cast<std::uint64_t>(number) : large);
    }
    return fmt::format("{} is {}", name, value);
}

} // namespace vorsim
