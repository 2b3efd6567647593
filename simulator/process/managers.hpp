// managers.hpp: the managers that are there, and how they come and go.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>

#include <vorinfra_manager.h>

#include "faults/rule.hpp"
#include "process/loop.hpp"
#include "values/random.hpp"

namespace vorsim {

class Managers {
public:
    using OnReadable = std::function<void(VOR_IPC_HANDLE* endpoint)>;
    using Milliseconds = faults::Milliseconds;

    Managers(Loop& loop, OnReadable on_readable) : loop_(loop), on_readable_(std::move(on_readable)) {}

    // Throws when somebody else serves the SAP.
    void start(std::uint16_t sap);
    void stop(std::uint16_t sap);
    // Stopped, and back at the time.
    void stop_until(std::uint16_t sap, Loop::Time back);

    // Null: not served.
    VOR_IPC_HANDLE* endpoint(std::uint16_t sap) const;
    std::size_t count() const { return endpoints_.size(); }

    std::optional<Loop::Time> deadline() const;
    void on_deadline(Loop::Time now);

private:
    struct Unbind {
        void operator()(VOR_IPC_HANDLE* handle) const { vor_ipc_unbind(handle); }
    };

    Loop& loop_;
    OnReadable on_readable_;
    std::map<std::uint16_t, std::unique_ptr<VOR_IPC_HANDLE, Unbind>> endpoints_;
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
