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

// A client that is idle for so long may be dropped for another.
inline constexpr std::chrono::milliseconds idle_for{2000};

// Drops the client that has been idle longest, if it has been idle long enough and a place is needed. False: there is
// still no room.
template <class Clients, class Drop>
bool make_room_among(Clients& clients, std::size_t most, bool no_descriptor, Drop drop)
{
    if (clients.size() < most && !no_descriptor) {
        return true;
    }
    const auto idle = std::ranges::min_element(clients, {}, [](const auto& one) { return one.second.active; });
    if (idle != clients.end() && std::chrono::steady_clock::now() - idle->second.active >= idle_for) {
        drop(idle->first);
    }
    return clients.size() < most;
}

// Connected, or -1 inside with errno set.
Descriptor connect_to(const std::string& path);

// All or nothing, without waiting and without SIGPIPE.
bool send_now(int descriptor, const std::string& bytes);

} // namespace vorsim::sockets
