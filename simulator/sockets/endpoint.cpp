#include "sockets/endpoint.hpp"

#include <array>
#include <cstring>

#include <sys/socket.h>
#include <sys/time.h>

namespace vorsim::sockets {
namespace {

constexpr std::size_t longest_kept = sizeof(VOR_IPC_MSG_HDR) + VORINFRA_DATA_MAX;

// When the kernel queued the datagram.
Arrival arrival_of(msghdr& message)
{
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_TIMESTAMPNS) {
            timespec time{};
            std::memcpy(&time, CMSG_DATA(part), sizeof time);
            return Arrival(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
        }
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_TIMESTAMP) {
            timeval time{};
            std::memcpy(&time, CMSG_DATA(part), sizeof time);
            return Arrival(std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec));
        }
    }
    return std::chrono::system_clock::now();
}

} // namespace

Endpoint::Endpoint(std::uint16_t sap) : endpoint_(vor_ipc_bind(sap, 0))
{
    const int on = 1;
    if (endpoint_ != nullptr && setsockopt(descriptor(), SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on) != 0) {
        setsockopt(descriptor(), SOL_SOCKET, SO_TIMESTAMP, &on, sizeof on); // some emulators only have this one
    }
}

std::optional<Arrival> Endpoint::next()
{
    if (next_) {
        return next_;
    }
    datagram_.resize(longest_kept);
    iovec bytes{datagram_.data(), datagram_.size()};
    alignas(cmsghdr) std::array<char, 128> control{};
    msghdr message{};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t size = recvmsg(descriptor(), &message, MSG_PEEK | MSG_DONTWAIT);
    if (size >= 0) {
        datagram_.resize(static_cast<std::size_t>(size));
        next_ = arrival_of(message);
    }
    return next_;
}

int Endpoint::receive(VORINFRA_MESSAGE& message)
{
    next_.reset();
    return vorinfra_receive(endpoint_.get(), &message);
}

} // namespace vorsim::sockets
