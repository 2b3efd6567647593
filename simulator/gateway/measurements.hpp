// measurements.hpp: values that move from one query to the next.
//
// Every reading depends on the seed and its name only: the same seed and the same queries give the same values. A
// reading that was set goes on from there once it is released.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "values/random.hpp"

namespace vorsim::gateway {

class Measurements {
public:
    explicit Measurements(std::uint64_t seed) : seed_(seed) {}

    // A counter: grows by 1 to `step` at every reading, and wraps around.
    std::uint64_t count(std::string_view name, std::uint64_t step);
    // A measurement: moves by at most `step` and stays within `range` of `middle`.
    std::int64_t measure(std::string_view name, std::int32_t middle, std::int32_t range, std::int32_t step);
    // A measurement that stays constant until it is set.
    std::int64_t constant(std::string_view name, std::int64_t value);

    // The values of the next readings. The last one stays until it is released, or is then released by itself.
    // Throws when no more readings can be kept.
    void set(std::string_view name, const std::vector<std::uint64_t>& values, bool then_released);
    void release(std::string_view name);
    // The readings that are set, with the values to come.
    struct Held {
        std::string name;
        std::vector<std::uint64_t> values;
        bool then_released;
    };
    std::vector<Held> held() const;
    // Counters run so many times as fast.
    void speed_up(std::uint64_t times) { speed_ = times; }

private:
    struct Stream {
        values::Random random;
        std::uint64_t value;
        bool set;
        std::vector<std::uint64_t> coming{}; // the next one last
        bool then_released{};

        // The value that was set; the next one takes its place.
        std::uint64_t read();
    };
    Stream& stream(std::string_view name, std::uint64_t begins_below);
    bool is_known(std::string_view name) const { return streams_.find(name) != streams_.end(); }

    std::uint64_t seed_;
    std::uint64_t speed_ = 1;
    std::map<std::string, Stream, std::less<>> streams_;
    std::optional<Stream> unkept_; // the latest beyond the limit
};

} // namespace vorsim::gateway
