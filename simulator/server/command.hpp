// command.hpp: a command that was read: what is to be done about it.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <variant>

#include "record/filter.hpp"

namespace vorsim {

class Control;
class Messages;
class Recorder;
struct World;

// What commands are about.
struct Running {
    World& world;
    Messages& messages;
    Control& control;
    const Recorder& recorder;
    bool konfd_served = false;
};

// Answered at once; what it throws is the answer, too.
using Request = std::function<std::string(Running& running)>;

struct WatchRequest {
    enum class As : std::uint8_t { line, json, event }; // an event: its number, a blank, and JSON without the bytes
    As as = As::line;
    Filter filter;
};
struct Wait {
    std::string call;
    std::string object; // empty: any
    std::chrono::milliseconds within{10'000};
};

struct Quit {};

using Command = std::variant<Request, WatchRequest, Wait, Quit>;

} // namespace vorsim
