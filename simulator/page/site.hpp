// site.hpp: the requests that the page answers, and whose.
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

// The latest messages as events, up to a limit shared by all who read them.
class Feed {
public:
    // A gap in the numbers means dropped messages.
    void add(std::uint64_t number, std::string data);

    // Some events after the one seen last, which moves on; empty: there are none.
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
    bool control{}; // the page may change faults and managers
};

class Site {
public:
    Site(sockets::Loop& loop, int listener, Settings settings);

private:
    Response answer(const Request& request);
    // Why the request is refused, if it is.
    std::optional<Response> refusal(const Request& request) const;
    Response state();
    Response events(const Request& request);
    Response execute(const std::string& command);
    std::string ask(const std::string& command);
    // Watches the gateway; reconnects when it has to.
    void watch();
    void receive();

    Settings settings_;
    sockets::Loop& loop_;
    Feed feed_;
    std::unique_ptr<client::EventStream> watch_;
    sockets::Loop::Time next_beat_;
    std::string state_; // shared by all requests for a moment
    sockets::Loop::Time state_due_{};
    std::string failure_; // of the gateway to answer in time
    sockets::Loop::Time failing_until_{};
    Http http_;
};

} // namespace vorsim::page
