#include "page/feed.hpp"

#include <algorithm>
#include <utility>

#include <fmt/core.h>

namespace vorsim::page {
namespace {

constexpr std::size_t most_events = 1000;
constexpr std::size_t most_bytes = 1 << 20;
constexpr std::size_t most_at_once = 1 << 16;

} // namespace

void Feed::add(std::uint64_t number, std::string data)
{
    events_.push_back({number, std::move(data)});
    size_ += events_.back().data.size();
    while (events_.size() > most_events || (size_ > most_bytes && events_.size() > 1)) {
        size_ -= events_.front().data.size();
        events_.pop_front();
    }
}

std::string Feed::after(std::uint64_t& seen) const
{
    std::string text;
    auto event = std::ranges::upper_bound(events_, seen, {}, &Event::number);
    for (; event != events_.end() && text.size() < most_at_once; ++event) {
        seen = event->number;
        text += fmt::format("id: {}\ndata: {}\n\n", seen, event->data);
    }
    return text;
}

} // namespace vorsim::page
