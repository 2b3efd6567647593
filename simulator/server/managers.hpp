// managers.hpp: the managers that are there, and how they come and go.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "faults/rule.hpp"
#include "sockets/endpoint.hpp"
#include "sockets/loop.hpp"
#include "values/random.hpp"

namespace vorsim {

class Managers {
public:
    using OnReadable = std::function<void(Endpoint& endpoint)>;
    using Complain = std::function<void(const std::string& why)>;
    using Endpoints = std::map<std::uint16_t, std::unique_ptr<Endpoint>>;

    // Complains of one that does not come back.
    Managers(Loop& loop, OnReadable on_readable, Complain complain);

    // Throws when somebody else serves the SAP.
    void start(std::uint16_t sap);
    void stop(std::uint16_t sap);
    // Stopped, and back at the time.
    void stop_until(std::uint16_t sap, Loop::Time back);

    // Null: not served.
    Endpoint* endpoint(std::uint16_t sap) const;
    const Endpoints& endpoints() const { return endpoints_; }

private:
    void start_due();

    Loop& loop_;
    OnReadable on_readable_;
    Complain complain_;
    Endpoints endpoints_;
    std::map<std::uint16_t, Loop::Time> back_;
};

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
        Random random;
    };
    std::map<std::uint16_t, Drawn> drawn_;
};

} // namespace vorsim
