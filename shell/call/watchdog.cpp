#include "call/watchdog.hpp"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/input_error.hpp"

namespace vorcfg::call {

namespace {

// After a signal, a call has this long to return.
constexpr unsigned grace_ms = 1000;
// The platform has the same limit and should be the first to give up.
constexpr unsigned platform_first_ms = 300;

std::function<void(int)>& last_act()
{
    static std::function<void(int)> act;
    return act;
}

} // namespace

void before_giving_up(std::function<void(int)> last)
{
    last_act() = std::move(last);
}

Watchdog::Watchdog(std::optional<unsigned> seconds, Signals ends, GiveUp give_up)
    : seconds_(seconds), give_up_(std::move(give_up))
{
    std::signal(SIGPIPE, SIG_IGN);
    if (ends != Signals::all) {
        std::signal(SIGHUP, SIG_IGN);
    }
    sigset_t set;
    sigemptyset(&set);
    for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(each, nullptr, &action);
        if (action.sa_handler != SIG_IGN && ends != Signals::none) { // under nohup, say
            sigaddset(&set, each);
        }
    }
    pthread_sigmask(SIG_BLOCK, &set, &before_);
    signals_ = signalfd(-1, &set, SFD_CLOEXEC);
    timer_ = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
    end_ = eventfd(0, EFD_CLOEXEC);
    if (signals_ < 0 || timer_ < 0 || end_ < 0) {
        throw input::InputError{fmt::format("cannot wait for signals: {}", std::strerror(errno)), input::exit_unusable};
    }
    thread_ = std::thread([this] { watch(); });
}

Watchdog::~Watchdog()
{
    eventfd_write(end_, 1);
    thread_.join();
    for (const int descriptor : {signals_, timer_, end_}) {
        close(descriptor);
    }
    if (ended()) {
        struct sigaction action {};
        sigaction(signal_, nullptr, &action);
        if (sigismember(&before_, signal_) == 1 || action.sa_handler != SIG_DFL) { // another waits for it, too
            kill(getpid(), signal_);
        }
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void Watchdog::give_up_after(unsigned seconds, unsigned milliseconds) const
{
    itimerspec limit{};
    limit.it_value = {static_cast<time_t>(seconds), static_cast<long>(milliseconds) * 1'000'000};
    timerfd_settime(timer_, 0, &limit, nullptr);
}

void Watchdog::set_under_way(bool under_way)
{
    const std::lock_guard lock(mutex_);
    under_way_ = under_way;
    if (seconds_) {
        give_up_after(under_way ? *seconds_ : 0, under_way ? platform_first_ms : 0);
    }
}

void Watchdog::rest(unsigned milliseconds)
{
    std::unique_lock lock(mutex_);
    signal_came_.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return ended(); });
}

void Watchdog::watch()
{
    while (true) {
        pollfd waits[] = {{signals_, POLLIN, 0}, {timer_, POLLIN, 0}, {end_, POLLIN, 0}};
        if (poll(waits, std::size(waits), -1) < 0) {
            continue;
        }
        if (waits[2].revents != 0) {
            return;
        }
        const bool again = ended();
        const bool signal = waits[0].revents != 0;
        if (signal) {
            signalfd_siginfo taken{};
            (void)!read(signals_, &taken, sizeof taken);
            signal_ = signal_ == SIGTERM ? SIGTERM : static_cast<int>(taken.ssi_signo); // which demands the most
        }
        const std::lock_guard lock(mutex_);
        signal_came_.notify_all();
        std::uint64_t expirations = 0; // of the call under way: each begins and ends with the timer reset
        const bool late = read(timer_, &expirations, sizeof expirations) == sizeof expirations;
        if (signal && !again) {
            if (!last_act()) {
                give_up_after(grace_ms / 1000, grace_ms % 1000);
            }
        } else if (under_way_ && (signal || late)) { // the other thread comes no further than the lock
            const int exit = give_up_(ended() ? "interrupted" : "no answer in time");
            if (last_act()) {
                last_act()(exit);
            }
            std::_Exit(exit);
        }
    }
}

} // namespace vorcfg::call
