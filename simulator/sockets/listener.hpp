// door.hpp: a listening socket whose callers may be more than there is room for.
#pragma once

#include <algorithm>
#include <functional>
#include <string>

#include "sockets/loop.hpp"
#include "sockets/unix_socket.hpp"

namespace vorsim {

// A caller that finds no room, or no descriptor left, waits outside; nobody
// spins meanwhile.
class Door {
public:
    // Frees a place where one is needed and can be had; one is needed at any
    // rate when there is no descriptor left. False: all are in use.
    using MakeRoom = std::function<bool(bool no_descriptor)>;
    using OnClient = std::function<void(Descriptor socket)>;

    Door(Loop& loop, const std::string& path, MakeRoom make_room, OnClient on_client);

private:
    void open();
    void accept_client();
    void close_for_a_while();

    Loop& loop_;
    Listener listener_;
    MakeRoom make_room_;
    OnClient on_client_;
    std::optional<Loop::Time> opens_at_;
};

// Without a word for so long, a client may lose its place to another.
inline constexpr std::chrono::milliseconds idle_for{2000};

// Lets go of the client that has been idle longest, and long enough, where one
// is asked for. False: there is room for no further one.
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

} // namespace vorsim
