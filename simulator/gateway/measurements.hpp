// measurements.hpp: values that move from one query to the next.
//
// Every reading draws from the seed and its name: the same seed and the same
// queries give the same values, whatever else is asked. A reading that was set
// is what it was set to: a counter counts on from there, a measurement stays
// until it is let go.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "values/random.hpp"

namespace vorsim {

class Measurements {
public:
    explicit Measurements(std::uint64_t seed) : seed_(seed) {}

    // A counter: grows by 1 to `step` at every reading, and wraps around.
    std::uint64_t count(std::string_view name, std::uint64_t step);
    // A measurement: moves by at most `step` and stays within `range` of `middle`.
    std::int64_t measure(std::string_view name, std::int32_t middle, std::int32_t range, std::int32_t step);
    // One that stands still until it is set.
    std::int64_t constant(std::string_view name, std::int64_t value) const;

    // Throws when no more readings can be kept.
    void set(std::string_view name, std::uint64_t value);
    void let_go(std::string_view name);
    // Counters grow so many times as fast.
    void speed_up(std::uint64_t times) { speed_ = times; }

private:
    struct Stream {
        Random random;
        std::uint64_t value;
        bool set;
    };
    Stream& stream(std::string_view name, std::uint64_t begins_below);
    bool is_known(std::string_view name) const { return streams_.find(name) != streams_.end(); }

    std::uint64_t seed_;
    std::uint64_t speed_ = 1;
    std::map<std::string, Stream, std::less<>> streams_;
    std::optional<Stream> unkept_; // the last one beyond the limit
};

} // namespace vorsim
