// site.hpp: what the page answers, and to whom.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "client/ask.hpp"
#include "page/http.hpp"

namespace vorsim::page {

// The latest messages, as events: what is kept is bounded, however many look on, and however slowly.
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

struct Settings {
    std::uint16_t port{};
    std::string token;
    bool control{}; // faults and managers can be switched
};

class Site {
public:
    Site(Loop& loop, int listener, Settings settings);

private:
    Response answer(const Request& request);
    // What is against the request, if anything.
    std::optional<Response> refusal(const Request& request) const;
    Response state();
    Response events(const Request& request);
    Response obey(const std::string& command);
    // Listens to the gateway, again where that came to an end.
    void watch();
    void listen();

    Settings settings_;
    Loop& loop_;
    Feed feed_;
    std::unique_ptr<client::EventStream> watch_;
    Loop::Time next_beat_;
    std::string state_; // as of a moment ago, for all who ask
    Loop::Time state_due_{};
    Http http_;
};

} // namespace vorsim::page
