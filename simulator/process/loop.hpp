// loop.hpp: the one place vorsim waits.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "process/unix_socket.hpp"

namespace vorsim {

class Loop {
public:
    using Handler = std::function<void()>;
    using Time = std::chrono::steady_clock::time_point;

    Loop();

    void watch(int descriptor, Handler on_readable);
    void watch_writing(int descriptor, Handler on_writable);
    void forget(int descriptor);

    // When to wake although nothing came in, and what to do then.
    void set_deadline(std::function<std::optional<Time>()> next, Handler on_deadline);

    void run();
    void stop() { running_ = false; }

private:
    void add(int descriptor, std::uint32_t events, Handler handler);
    int milliseconds_left() const;

    Descriptor poll_;
    std::map<int, std::shared_ptr<Handler>> handlers_;
    std::function<std::optional<Time>()> next_deadline_;
    Handler on_deadline_;
    bool running_ = true;
};

} // namespace vorsim
