#include "gateway/measurements.hpp"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <fmt/core.h>

namespace vorsim::gateway {
namespace {

constexpr std::size_t most_streams = 4096; // more than a gateway has ports

} // namespace

// A new stream starts anywhere below the bound. Beyond the limit, streams start again at every reading.
Measurements::Stream& Measurements::stream(std::string_view name, std::uint64_t begins_below)
{
    const auto found = streams_.find(name);
    if (found != streams_.end()) {
        return found->second;
    }
    Stream fresh{values::Random(seed_, name), 0, false};
    fresh.value = fresh.random.draw(begins_below);
    return streams_.size() < most_streams ? streams_.emplace(name, fresh).first->second : unkept_.emplace(fresh);
}

std::uint64_t Measurements::Stream::read()
{
    const std::uint64_t now = value;
    if (!coming.empty()) {
        value = coming.back();
        coming.pop_back();
    } else {
        set = !then_released;
    }
    return now;
}

std::uint64_t Measurements::count(std::string_view name, std::uint64_t step)
{
    Stream& counts = stream(name, 1000 * step);
    if (counts.set) {
        return counts.read();
    }
    counts.value += speed_ * (1 + counts.random.draw(step));
    return counts.value;
}

std::int64_t Measurements::measure(std::string_view name, std::int32_t middle, std::int32_t range, std::int32_t step)
{
    const std::int64_t least = std::int64_t{middle} - range;
    const std::int64_t most = std::int64_t{middle} + range;
    const bool known = is_known(name);
    Stream& measured = stream(name, static_cast<std::uint64_t>(most - least + 1));
    if (measured.set) {
        return static_cast<std::int64_t>(measured.read());
    }
    auto value = static_cast<std::int64_t>(measured.value) + (known ? 0 : least);
    // Always changes: a constant measurement looks like a dead sensor.
    const auto moved = static_cast<std::int64_t>(1 + measured.random.draw(static_cast<std::uint64_t>(step)));
    const bool up = value <= least || (value < most && measured.random.draw(2) == 0);
    value = std::clamp(value + (up ? moved : -moved), least, most);
    measured.value = static_cast<std::uint64_t>(value);
    return value;
}

std::int64_t Measurements::constant(std::string_view name, std::int64_t value)
{
    const auto found = streams_.find(name);
    return found != streams_.end() && found->second.set ? static_cast<std::int64_t>(found->second.read()) : value;
}

void Measurements::set(std::string_view name, const std::vector<std::uint64_t>& values, bool then_released)
{
    if (!is_known(name) && streams_.size() == most_streams) {
        throw std::runtime_error(fmt::format("at most {} readings can be set; vorsim reset clears them", most_streams));
    }
    Stream& reading = stream(name, 1);
    reading.value = values.front();
    reading.coming.assign(values.rbegin(), std::prev(values.rend()));
    reading.set = true;
    reading.then_released = then_released;
}

void Measurements::release(std::string_view name)
{
    const auto found = streams_.find(name);
    if (found != streams_.end()) {
        found->second.set = false;
    }
}

std::vector<Measurements::Held> Measurements::held() const
{
    std::vector<Held> all;
    for (const auto& [name, stream] : streams_) {
        if (stream.set) {
            Held& held = all.emplace_back(Held{name, {stream.value}, stream.then_released});
            held.values.insert(held.values.end(), stream.coming.rbegin(), stream.coming.rend());
        }
    }
    return all;
}

} // namespace vorsim::gateway
