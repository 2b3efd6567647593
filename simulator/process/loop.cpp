#include "process/loop.hpp"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <sys/epoll.h>

namespace vorsim {

Loop::Loop() : poll_(epoll_create1(EPOLL_CLOEXEC))
{
    if (poll_.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "epoll_create1");
    }
}

void Loop::add(int descriptor, std::uint32_t events, Handler handler)
{
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    const bool known = handlers_.contains(descriptor);
    if (epoll_ctl(poll_.get(), known ? EPOLL_CTL_MOD : EPOLL_CTL_ADD, descriptor, &event) != 0) {
        throw std::system_error(errno, std::generic_category(), "epoll_ctl");
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

void Loop::set_deadline(std::function<std::optional<Time>()> next, Handler on_deadline)
{
    next_deadline_ = std::move(next);
    on_deadline_ = std::move(on_deadline);
}

int Loop::milliseconds_left() const
{
    const auto next = next_deadline_ ? next_deadline_() : std::nullopt;
    if (!next) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60000));
}

void Loop::run()
{
    while (running_) {
        epoll_event events[32];
        const int count = epoll_wait(poll_.get(), events, 32, milliseconds_left());
        for (int at = 0; at < count && running_; ++at) {
            const auto found = handlers_.find(events[at].data.fd);
            if (found != handlers_.end()) {
                const auto handler = found->second; // it may forget itself
                (*handler)();
            }
        }
        if (on_deadline_) {
            on_deadline_();
        }
    }
}

} // namespace vorsim
