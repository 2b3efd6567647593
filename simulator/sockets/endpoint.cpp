#include "sockets/endpoint.hpp"

#include <array>
#include <cstring>

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace vorsim::sockets {
namespace {

constexpr std::size_t longest_kept = sizeof(VOR_IPC_MSG_HDR) + VORINFRA_DATA_MAX;

// When the kernel queued the datagram. Descriptors that it carries are closed.
Arrival arrival_of(msghdr& message)
{
    Arrival arrival = std::chrono::system_clock::now();
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_TIMESTAMPNS) {
            timespec time{};
            std::memcpy(&time, CMSG_DATA(part), sizeof time);
            arrival = Arrival(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
        }
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_TIMESTAMP) {
            timeval time{};
            std::memcpy(&time, CMSG_DATA(part), sizeof time);
            arrival = Arrival(std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec));
        }
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_RIGHTS) {
            const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
            for (std::size_t at = 0; at < count; ++at) {
                int descriptor = -1;
                std::memcpy(&descriptor, CMSG_DATA(part) + at * sizeof descriptor, sizeof descriptor);
                close(descriptor);
            }
        }
    }
    return arrival;
}

} // namespace

Endpoint::Endpoint(std::uint16_t sap) : endpoint_(vor_ipc_bind(sap, 0))
{
    ask_for_arrivals();
}

Endpoint::Endpoint(const std::string& directory, std::uint16_t first, std::uint16_t last)
    : endpoint_(vorinfra_bind_in(directory.c_str(), first, last))
{
    ask_for_arrivals();
}

void Endpoint::ask_for_arrivals()
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
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(timespec))> control{}; // no room for descriptors
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

bool Endpoint::is_message() const
{
    VOR_IPC_MSG_HDR header{};
    if (datagram_.size() < sizeof header) {
        return false;
    }
    std::memcpy(&header, datagram_.data(), sizeof header);
    return datagram_.size() == sizeof header + std::size_t{header.meta_data_sz} + header.payload_sz;
}

int Endpoint::receive(VORINFRA_MESSAGE& message)
{
    next_.reset();
    return vorinfra_receive(endpoint_.get(), &message);
}

int Endpoint::receive_answer(VORINFRA_MESSAGE& message)
{
    next_.reset();
    return vorinfra_receive_answer(endpoint_.get(), &message);
}

} // namespace vorsim::sockets
