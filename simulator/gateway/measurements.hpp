// measurements.hpp: values that move from one query to the next.
//
// Every reading has its own stream, drawn from the seed and its name: the same
// seed and the same queries give the same values, whatever else is asked.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace vorsim {

class Measurements {
public:
    explicit Measurements(std::uint64_t seed) : seed_(seed) {}

    // A counter: grows by 1 to `step` at every reading.
    std::uint64_t count(std::string_view name, std::uint64_t step);
    // A measurement: moves by at most `step` and stays within `range` of `middle`.
    std::int32_t measure(std::string_view name, std::int32_t middle, std::int32_t range, std::int32_t step);

private:
    struct Stream {
        std::uint64_t state;
        std::int64_t value;
        bool started;

        std::uint64_t draw(std::uint64_t below);
    };
    Stream& stream(std::string_view name);

    std::uint64_t seed_;
    std::map<std::string, Stream, std::less<>> streams_;
};

} // namespace vorsim
