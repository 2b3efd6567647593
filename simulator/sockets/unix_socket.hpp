// unix_socket.hpp: descriptors and Unix stream sockets.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "sockets/loop.hpp"

namespace vorsim {

// The path is served already, by a process that lives.
struct InUse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A listening socket; its path goes with it. A caller that finds no room, or no descriptor left, waits outside; nobody
// spins meanwhile.
class Listener {
public:
    // Frees a place where one is needed and can be had; one is needed at any
    // rate when there is no descriptor left. False: all are in use.
    using MakeRoom = std::function<bool(bool no_descriptor)>;
    using OnClient = std::function<void(Descriptor socket)>; // it does not block

    // Takes a dead owner's path over. Throws InUse, or runtime_error.
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

// Connected, or -1 inside with errno set.
Descriptor connect_to(const std::string& path);

// All of it at once, without waiting and without a signal.
bool send_now(int descriptor, const std::string& bytes);

} // namespace vorsim
