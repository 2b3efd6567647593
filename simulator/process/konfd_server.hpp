// konfd_server.hpp: konfd's socket and its clients.
#pragma once

#include <functional>
#include <map>

#include "faults/faults.hpp"
#include "konfd/session.hpp"
#include "process/halves.hpp"
#include "process/loop.hpp"
#include "process/unix_socket.hpp"

namespace vorsim {

class KonfdServer {
public:
    // Reports the reply, and may disturb it.
    using OnReply = std::function<faults::Hearing(konfd::Reply& reply)>;

    KonfdServer(Loop& loop, konfd::Konfd& konfd, const std::string& path, OnReply on_reply);

    std::optional<konfd::Time> deadline() const;
    // Carries out what its sender left without an end.
    void on_deadline();

private:
    struct Client {
        Descriptor socket;
        konfd::Session session;
    };

    void accept_client();
    void read_commands(int descriptor);
    // False: the client does not take its answers and was let go.
    bool answer(int descriptor, std::vector<konfd::Reply> replies);
    void drop_client(int descriptor);

    Loop& loop_;
    konfd::Konfd& konfd_;
    Listener listener_;
    OnReply on_reply_;
    Halves halves_;
    std::map<int, Client> clients_;
};

} // namespace vorsim
