// observer.hpp: observes what the library and the platform exchange. The shell defines the platform's message, chain,
// socket and timer operations itself (the executable's symbols come first) and passes them on: so it knows what was
// sent and answered, with any platform library.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <vorinfra.h>

#include "call/message.hpp"

namespace vorcfg {

struct Observation {
    std::vector<Message> messages;
    std::optional<std::uint16_t> trace_switched; // the module whose platform trace was switched
    std::optional<std::uint32_t> timer;          // milliseconds
    bool unconnected = false;                    // konfd could not be reached
    std::string deserted{};                      // the platform's directory, where nothing listens in it
};

// Observes until it goes out of scope.
class Observer {
public:
    struct Settings {
        bool capture = false; // nothing reaches the platform: every exchange is accepted on the spot
        bool trace = false;   // each message on standard error, as it goes out
    };

    // The values say what is secret; a record in an answer has no status in front of it.
    Observer(Settings how, const Row& called, std::span<const Value> given);
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    ~Observer();

    const Settings settings;
    const Row& row;
    const std::span<const Value> values;
    Observation seen;

private:
    VOR_IPC_HANDLE* const endpoint_; // comes back behind a call that is only captured
};

// The directory of the simulated gateway's sockets where none of its managers listens; else, and on another platform,
// empty.
std::string deserted_directory();

} // namespace vorcfg
