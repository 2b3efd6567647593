// command.hpp: a command that was read.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>

#include "record/filter.hpp"

namespace vorsim::server {

class Control;
class Messages;
class Recorder;
struct World;

// What commands act on.
struct Running {
    World& world;
    Messages& messages;
    Control& control;
    Recorder& recorder;
    bool konfd_served = false;
};

// Answered with the result, or with the error that it throws; without a result, there is more to do in the next turn.
using Request = std::function<std::optional<std::string>(Running& running)>;

struct WatchRequest {
    bool json = false; // with the bytes
    record::Filter filter;
};
// The messages since the start or the last reset: a line with the number of the first one, the last one up to which it
// answers, how many of them have been forgotten, and whether there are more; then a line for each.
struct ReceivedRequest {
    record::Filter filter;
    std::uint64_t after = 0;            // the number of the last that is known
    std::chrono::milliseconds within{}; // how long to wait for one beyond it
};

struct Quit {};

using Command = std::variant<Request, WatchRequest, ReceivedRequest, Quit>;

} // namespace vorsim::server
