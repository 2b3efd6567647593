// received.hpp: the messages that a running gateway remembers.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "values/record.hpp"

namespace vorsim::client {

class Received {
public:
    // The words of a filter restrict what is asked for.
    explicit Received(std::vector<std::string> filter = {}) : filter_(std::move(filter)) {}

    // Asks for those that arrived since the last time, and waits for one if there is none. After a reset it begins
    // anew.
    void update(std::chrono::milliseconds within = {});
    // Passes over what has arrived so far.
    void skip();

    const std::vector<values::Record>& records() const { return records_; }
    // The same, which are kept no longer.
    std::vector<values::Record> take() { return std::exchange(records_, {}); }
    // The number of the first message since the last reset.
    std::uint64_t first() const { return first_; }
    std::uint64_t forgotten() const { return forgotten_; }

private:
    std::vector<std::string> filter_;
    std::vector<values::Record> records_;
    std::uint64_t first_ = 0;
    std::uint64_t last_ = 0;
    std::uint64_t forgotten_ = 0;
};

} // namespace vorsim::client
