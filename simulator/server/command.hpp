// command.hpp: a command that was read.
#pragma once

#include <chrono>
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
    const Recorder& recorder;
    bool konfd_served = false;
};

// Answered with the result, or with the error that it throws; without a result, there is more to do in the next turn.
using Request = std::function<std::optional<std::string>(Running& running)>;

struct WatchRequest {
    bool json = false; // with the bytes
    record::Filter filter;
};
struct Wait {
    std::string call;
    std::string object; // empty: any
    std::chrono::milliseconds within{10'000};
};

struct Quit {};

using Command = std::variant<Request, WatchRequest, Wait, Quit>;

} // namespace vorsim::server
