// feed.hpp: the latest messages, as events for whoever looks on: what is kept is bounded, however many do, and however
// slowly.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

namespace vorsim::page {

class Feed {
public:
    // How many were lost before it shows in the numbers.
    void add(std::uint64_t number, std::string data);

    // Some of what came after the message that was seen last, which then moves on; empty: nothing did.
    std::string after(std::uint64_t& seen) const;

private:
    struct Event {
        std::uint64_t number;
        std::string data;
    };

    std::deque<Event> events_;
    std::size_t size_ = 0;
};

} // namespace vorsim::page
