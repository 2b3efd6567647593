// feed.hpp: the latest messages, as events for whoever looks on: what is kept is bounded, however many do, and however
// slowly.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>

#include <fmt/core.h>

namespace vorsim::page {

class Feed {
public:
    // How many were lost before it shows in the numbers.
    void add(std::uint64_t number, std::string data)
    {
        events_.push_back({number, std::move(data)});
        size_ += events_.back().data.size();
        while (events_.size() > most_events || (size_ > most_bytes && events_.size() > 1)) {
            size_ -= events_.front().data.size();
            events_.pop_front();
        }
    }

    // Some of what came after the message that was seen last, which then moves on; empty: nothing did.
    std::string after(std::uint64_t& seen) const
    {
        std::string text;
        auto event = std::ranges::upper_bound(events_, seen, {}, &Event::number);
        for (; event != events_.end() && text.size() < most_at_once; ++event) {
            seen = event->number;
            text += fmt::format("id: {}\ndata: {}\n\n", seen, event->data);
        }
        return text;
    }

private:
    static constexpr std::size_t most_events = 1000;
    static constexpr std::size_t most_bytes = 1 << 20;
    static constexpr std::size_t most_at_once = 1 << 16;

    struct Event {
        std::uint64_t number;
        std::string data;
    };

    std::deque<Event> events_;
    std::size_t size_ = 0;
};

} // namespace vorsim::page
