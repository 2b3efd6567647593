#include "gateway/measurements.hpp"

#include <algorithm>

namespace vorsim {

// splitmix64
std::uint64_t Measurements::Stream::draw(std::uint64_t below)
{
    state += 0x9e3779b97f4a7c15U;
    std::uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
    return (mixed ^ (mixed >> 31U)) % below;
}

Measurements::Stream& Measurements::stream(std::string_view name)
{
    const auto found = streams_.find(name);
    if (found != streams_.end()) {
        return found->second;
    }
    std::uint64_t hash = 0xcbf29ce484222325U ^ seed_; // FNV-1a over the name
    for (const char character : name) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3U;
    }
    return streams_.emplace(name, Stream{hash, 0, false}).first->second;
}

std::uint64_t Measurements::count(std::string_view name, std::uint64_t step)
{
    Stream& counter = stream(name);
    counter.value += static_cast<std::int64_t>(1 + counter.draw(step));
    return static_cast<std::uint64_t>(counter.value);
}

std::int32_t Measurements::measure(std::string_view name, std::int32_t middle, std::int32_t range, std::int32_t step)
{
    Stream& measured = stream(name);
    if (!measured.started) {
        measured.started = true;
        measured.value = middle;
    }
    // Never stands still: a frozen measurement looks like a dead sensor.
    const auto moved = static_cast<std::int64_t>(1 + measured.draw(static_cast<std::uint64_t>(step)));
    const bool up = measured.value <= middle - range || (measured.value < middle + range && measured.draw(2) == 0);
    measured.value = std::clamp<std::int64_t>(measured.value + (up ? moved : -moved), middle - range, middle + range);
    return static_cast<std::int32_t>(measured.value);
}

} // namespace vorsim
