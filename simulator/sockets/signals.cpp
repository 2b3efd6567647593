#include "sockets/signals.hpp"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/time.h>
#include <unistd.h>

namespace vorsim {
namespace {

constexpr suseconds_t patience_us = 750'000;

volatile int requests = -1;

extern "C" void on_stop_signal(int)
{
    const int error = errno;
    const std::uint64_t once = 1;
    [[maybe_unused]] const ssize_t told = write(requests, &once, sizeof once);
    itimerval timer{};
    timer.it_value.tv_usec = patience_us;
    setitimer(ITIMER_REAL, &timer, nullptr);
    errno = error;
}

extern "C" void on_patience_over(int)
{
    static constexpr char text[] = "vorsim: did not come to an end in time; the next one takes its sockets over\n";
    pollfd readers{STDERR_FILENO, POLLOUT, 0};
    if (poll(&readers, 1, 0) == 1) {
        [[maybe_unused]] const ssize_t told = write(STDERR_FILENO, text, sizeof text - 1);
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

Descriptor stop_requests()
{
    Descriptor descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (descriptor.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    requests = descriptor.get();
    handle(SIGALRM, on_patience_over);
    handle(SIGTERM, on_stop_signal);
    handle(SIGINT, on_stop_signal);
    return descriptor;
}

} // namespace vorsim
