// managers.hpp: the managers that are served; they stop and start.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "faults/rule.hpp"
#include "sockets/endpoint.hpp"
#include "sockets/loop.hpp"
#include "values/random.hpp"
#include "values/record.hpp"

namespace vorsim::server {

class Managers {
public:
    using OnReadable = std::function<void(sockets::Endpoint& endpoint)>;
    using OnError = std::function<void(const std::string& error)>;
    using Endpoints = std::map<std::uint16_t, std::unique_ptr<sockets::Endpoint>>;

    // Reports a manager that cannot be restarted.
    Managers(sockets::Loop& loop, OnReadable on_readable, OnError on_error);

    // This gateway serves it, whenever it is started.
    void own(std::uint16_t sap) { own_.insert(sap); }
    // Throws when another process serves the SAP.
    void start(std::uint16_t sap);
    void stop(std::uint16_t sap);
    void start_at(std::uint16_t sap, sockets::Loop::Time back) { back_[sap] = back; }
    // Its messages wait.
    void pause(std::uint16_t sap);
    void resume(std::uint16_t sap);

    // Another program serves it. It can neither start nor stop here.
    void leave(std::uint16_t sap) { left_.insert(sap); }
    const std::set<std::uint16_t>& left() const { return left_; }
    // Throws when it was left to another program, or nobody said that it is served.
    void expect_own(std::uint16_t sap) const;
    void expect_own(const faults::Rule& rule) const;

    // Null: not served.
    sockets::Endpoint* endpoint(std::uint16_t sap) const;
    const Endpoints& endpoints() const { return endpoints_; }

private:
    void start_due();
    void watch(sockets::Endpoint& endpoint);

    sockets::Loop& loop_;
    OnReadable on_readable_;
    OnError on_error_;
    Endpoints endpoints_;
    std::set<std::uint16_t> own_;
    std::set<std::uint16_t> left_;
    std::map<std::uint16_t, sockets::Loop::Time> back_;
};

// A datagram that the platform has dropped: a message, which is not the kind expected, or none.
values::Record dropped(const sockets::Endpoint& endpoint, const char* message);

// How long a manager takes for each answer, drawn from the seed.
struct Delay {
    faults::Milliseconds least;
    faults::Milliseconds most;
};

class Delays {
public:
    Delays(std::uint64_t seed, const std::map<std::uint16_t, Delay>& delays);

    faults::Milliseconds draw(std::uint16_t sap);

private:
    struct Drawn {
        Delay delay;
        values::Random random;
    };
    std::map<std::uint16_t, Drawn> drawn_;
};

} // namespace vorsim::server
