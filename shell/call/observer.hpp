// observer.hpp: observes the calls of the platform. vorcfg defines the platform's message, chain, socket and timer
// functions itself (the executable's symbols take precedence) and passes the calls on, so it knows what was really sent
// and answered, with any platform library.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <vorinfra.h>

#include "call/message.hpp"

namespace vorcfg::call {

// The shells' endpoints, which no manager uses, begin here.
inline constexpr std::uint16_t first_sap = 0x1000;

struct Observation {
    std::vector<Message> messages;
    std::optional<std::uint16_t> trace_switched; // the module whose platform trace was switched
    std::optional<std::uint32_t> timer;          // milliseconds
    bool unconnected = false;                    // konfd could not be reached
    std::string deserted{};                      // the directory of the simulated gateway, if nothing listens there
};

// What a platform that only captures pretends.
struct Pretence {
    enum class Fate : std::uint8_t { answered, refused, lost, no_buffer, unconnected };
    Fate fate = Fate::answered;
    std::optional<std::uint32_t> answer_id{}; // else the message's own
    std::optional<std::int32_t> status = 0;   // none: an empty answer
    std::string_view konfd = "-o";            // its answer
    std::uint8_t filling = 0;                 // every byte of a new buffer
};

// Observes until it goes out of scope.
class Observer {
public:
    struct Settings {
        bool capture = false; // nothing reaches the platform: every exchange is accepted on the spot
        bool trace = false;   // each message on standard error, as it is sent
        bool gather = false;  // what the platform prints on standard error is kept as what the library prints
        std::optional<Pretence> pretence{}; // of a capture, which then tells what became of a message, too
    };

    // The call's values say what is secret; a record that is answered does not begin with a status.
    Observer(Settings settings, const rows::Row& called, std::span<const rows::Value> given);
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    ~Observer();

    const Settings settings;
    const rows::Row& row;
    const std::span<const rows::Value> values;
    Observation seen;

private:
    VOR_IPC_HANDLE* const endpoint_; // restored after a captured call
};

// The directory of the simulated gateway's sockets where none of its managers listens; else, and on another platform,
// empty.
std::string deserted_directory();

} // namespace vorcfg::call
