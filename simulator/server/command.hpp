// command.hpp: a command that was read.
#pragma once

#include <chrono>
#include <functional>
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

// Answered at once: with the result, or with the error that it throws.
using Request = std::function<std::string(Running& running)>;

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
