// unix_socket.hpp: descriptors and Unix stream sockets.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "sockets/loop.hpp"

namespace vorsim::sockets {

// A living process already serves the path.
struct InUse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A listening socket, whose path is removed with it. While there is no room or no descriptor for another client,
// clients wait to be accepted.
class Listener {
public:
    // Frees a place if needed and possible; always needed when there is no descriptor left. False: all are in use.
    using MakeRoom = std::function<bool(bool no_descriptor)>;
    using OnClient = std::function<void(Descriptor socket)>; // must not block

    // Replaces the socket of a dead owner. Throws InUse or runtime_error.
    Listener(Loop& loop, const std::string& path, MakeRoom make_room, OnClient on_client);
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

private:
    struct Bound {
        std::string path; // empty: none yet
        ~Bound();
    };

    void open();
    void accept_client();
    void close_for_a_while();

    Loop& loop_;
    Bound bound_;
    Descriptor socket_;
    MakeRoom make_room_;
    OnClient on_client_;
    std::optional<Loop::Time> opens_at_;
};

// A client that has completed nothing for so long may be dropped for another.
inline constexpr std::chrono::milliseconds may_be_dropped_after{50};
// A client whose request takes so long to arrive is dropped.
inline constexpr std::chrono::milliseconds dropped_after{10000};

// Drops the slowest client, if a place is needed and one is slow. False: there is still no room.
template <class Clients, class Drop>
bool make_room_among(Clients& clients, std::size_t most, bool no_descriptor, Drop drop)
{
    if (clients.size() < most && !no_descriptor) {
        return true;
    }
    const auto since = [](const auto& one) { return one.second.slow_since().value_or(Loop::Time::max()); };
    const auto slowest = std::ranges::min_element(clients, {}, since);
    if (slowest != clients.end() && since(*slowest) <= std::chrono::steady_clock::now() - may_be_dropped_after) {
        drop(slowest->first);
    }
    return clients.size() < most;
}

// Connected, or -1 inside with errno set: EAGAIN if it is not accepted in time.
Descriptor connect_to(const std::string& path, std::chrono::milliseconds within = dropped_after);

// Whether the other end of a connection is closed for good.
bool has_hung_up(int descriptor);

// All or nothing, without waiting and without SIGPIPE.
bool send_now(int descriptor, const std::string& bytes);

} // namespace vorsim::sockets
