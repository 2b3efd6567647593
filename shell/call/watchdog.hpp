// watchdog.hpp: ends a run from outside, after a signal or when a call does not return.
#pragma once

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace vorcfg::call {

// Which end a run: interrupt, termination and hang-up, all but the hang-up, or none, which are left for later.
enum class Signals : std::uint8_t { all, no_hang_up, none };

// While it is in scope, a thread waits for these, which do not end a call under way at once. A call that does not
// return in time, or soon after a signal, is given up: `give_up` is called with "no answer in time" or "interrupted" to
// report it, and the process exits with its value.
class Watchdog {
public:
    using GiveUp = std::function<int(const char* why)>;

    Watchdog(std::optional<unsigned> seconds, Signals ends, GiveUp give_up);
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    ~Watchdog();

    bool ended() const { return signal_ != 0; } // no further call may begin
    int signal() const { return signal_; }      // that came; SIGTERM if that did
    void rest(unsigned milliseconds);           // or until it is ended

    // A call under way.
    class Call {
    public:
        explicit Call(Watchdog& watchdog) : watchdog_(watchdog) { watchdog_.set_under_way(true); }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        ~Call() { watchdog_.set_under_way(false); }

    private:
        Watchdog& watchdog_;
    };

private:
    void set_under_way(bool under_way);
    void give_up_after(unsigned seconds, unsigned milliseconds) const;
    void watch();

    const std::optional<unsigned> seconds_;
    const GiveUp give_up_;
    sigset_t before_{};
    int signals_ = -1;
    int timer_ = -1;
    int end_ = -1;
    std::mutex mutex_;
    std::condition_variable signal_came_;
    bool under_way_ = false;
    std::atomic<int> signal_ = 0;
    std::thread thread_;
};

// Called with the exit code before the process ends because a call was given up. With it, a call that a signal came
// during is given up by the next one only.
void before_giving_up(std::function<void(int exit)> last);

} // namespace vorcfg::call
