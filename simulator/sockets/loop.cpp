#include "sockets/loop.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/time.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vorsim::sockets {
namespace {

constexpr suseconds_t patience_us = 750'000;

volatile int requests = -1;

extern "C" void on_stop_signal(int)
{
    const int error = errno;
    const std::uint64_t once = 1;
    [[maybe_unused]] const ssize_t written = write(requests, &once, sizeof once);
    itimerval timer{};
    timer.it_value.tv_usec = patience_us;
    setitimer(ITIMER_REAL, &timer, nullptr);
    errno = error;
}

extern "C" void on_stop_timeout(int)
{
    static constexpr char text[] = "vorsim: not stopped in time, killed; the next start replaces its sockets\n";
    pollfd readers{STDERR_FILENO, POLLOUT, 0};
    if (poll(&readers, 1, 0) == 1) {
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, sizeof text - 1);
    }
    _exit(1);
}

void handle(int signal_number, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signal_number, &action, nullptr);
}

} // namespace

Descriptor::~Descriptor()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

void fail(const std::string& what)
{
    throw std::runtime_error(fmt::format("{}: {}", what, std::strerror(errno)));
}

Loop::Loop() : poll_(epoll_create1(EPOLL_CLOEXEC))
{
    if (poll_.get() < 0) {
        fail("epoll_create1");
    }
}

void Loop::add(int descriptor, std::uint32_t events, Handler handler)
{
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    const bool known = handlers_.contains(descriptor);
    if (epoll_ctl(poll_.get(), known ? EPOLL_CTL_MOD : EPOLL_CTL_ADD, descriptor, &event) != 0) {
        fail("epoll_ctl");
    }
    handlers_[descriptor] = std::make_shared<Handler>(std::move(handler));
}

void Loop::watch(int descriptor, Handler on_readable)
{
    add(descriptor, EPOLLIN, std::move(on_readable));
}

void Loop::watch_writing(int descriptor, Handler on_writable)
{
    add(descriptor, EPOLLOUT, std::move(on_writable));
}

void Loop::forget(int descriptor)
{
    if (handlers_.erase(descriptor) != 0) {
        epoll_ctl(poll_.get(), EPOLL_CTL_DEL, descriptor, nullptr);
    }
}

void Loop::at(std::function<std::optional<Time>()> next, Handler on_deadline)
{
    deadlines_.push_back({std::move(next), std::move(on_deadline)});
}

void Loop::in_turn(std::function<bool()> work)
{
    work_.push_back(std::move(work));
}

int Loop::milliseconds_left() const
{
    const auto first = earliest(deadlines_, [](const Deadline& deadline) { return deadline.next(); });
    if (!first) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*first - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60000));
}

void Loop::act_on_deadlines()
{
    for (const Deadline& deadline : deadlines_) {
        if (deadline.next().value_or(Time::max()) <= std::chrono::steady_clock::now()) {
            deadline.act();
        }
    }
}

void Loop::run()
{
    bool more = false;
    while (running_) {
        std::array<epoll_event, 256> events; // all ready ones, so that none is starved
        const int count =
            epoll_wait(poll_.get(), events.data(), static_cast<int>(events.size()), more ? 0 : milliseconds_left());
        for (int at = 0; at < count; ++at) {
            const auto found = handlers_.find(events[static_cast<std::size_t>(at)].data.fd);
            if (found != handlers_.end()) {
                const auto handler = found->second; // it may forget itself
                (*handler)();
            }
        }
        more = false;
        for (const auto& work : work_) {
            more = work() || more;
        }
        act_on_deadlines();
    }
}

Descriptor stop_requests()
{
    Descriptor descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (descriptor.get() < 0) {
        fail("eventfd");
    }
    requests = descriptor.get();
    handle(SIGALRM, on_stop_timeout);
    handle(SIGTERM, on_stop_signal);
    handle(SIGINT, on_stop_signal);
    return descriptor;
}

} // namespace vorsim::sockets
