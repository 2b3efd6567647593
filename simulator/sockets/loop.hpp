// loop.hpp: the one place vorsim waits.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorsim::sockets {

class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~Descriptor();

    int get() const { return descriptor_; }

private:
    int descriptor_;
};

// Throws a runtime_error with the reason in errno.
[[noreturn]] void fail(const std::string& what);

class Loop {
public:
    using Handler = std::function<void()>;
    using Time = std::chrono::steady_clock::time_point;

    Loop();

    void watch(int descriptor, Handler on_readable);
    void watch_writing(int descriptor, Handler on_writable);
    void forget(int descriptor);

    // When to wake up without input, and what to do then.
    void at(std::function<std::optional<Time>()> next, Handler on_deadline);
    // Work for every turn, a bounded piece at a time; returns whether there is more.
    void in_turn(std::function<bool()> work);

    void run();
    void stop() { running_ = false; }

private:
    struct Deadline {
        std::function<std::optional<Time>()> next;
        Handler act;
    };

    void add(int descriptor, std::uint32_t events, Handler handler);
    int milliseconds_left() const;
    void act_on_deadlines();

    Descriptor poll_;
    std::map<int, std::shared_ptr<Handler>> handlers_;
    std::vector<Deadline> deadlines_;
    std::vector<std::function<bool()>> work_;
    bool running_ = true;
};

// The first deadline, if any has one.
template <class Each, class DeadlineOf>
std::optional<Loop::Time> earliest(const Each& each, DeadlineOf deadline_of)
{
    std::optional<Loop::Time> first;
    for (const auto& one : each) {
        if (const std::optional<Loop::Time> next = deadline_of(one)) {
            first = std::min(*next, first.value_or(*next));
        }
    }
    return first;
}

// Readable after SIGTERM or SIGINT; if stopping then takes too long, the process exits. Only once in a process.
Descriptor stop_requests();

} // namespace vorsim::sockets
