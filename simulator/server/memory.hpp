// memory.hpp: the latest messages since the start or the last reset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "sockets/endpoint.hpp"
#include "values/record.hpp"

namespace vorsim::server {

// "2024-05-01T12:00:00.123456Z"
std::string time_text(sockets::Arrival time);

class Memory {
public:
    // Without its bytes.
    struct Remembered {
        values::Record record;
        sockets::Arrival arrived;
        std::size_t size; // of its texts

        std::string json() const;
    };

    // The next one; takes the record.
    void add(values::Record& record, sockets::Arrival arrived);
    void forget();

    const std::deque<Remembered>& all() const { return all_; } // numbered without gaps
    // Since then, remembered or not.
    std::uint64_t first() const { return first_; }
    std::uint64_t last() const { return last_; }

private:
    std::deque<Remembered> all_;
    std::size_t size_ = 0;
    std::uint64_t first_ = 1;
    std::uint64_t last_ = 0;
};

} // namespace vorsim::server
