// konfd_server.hpp: konfd's socket and its clients.
#pragma once

#include <functional>
#include <map>

#include "konfd/session.hpp"
#include "process/loop.hpp"
#include "process/unix_socket.hpp"

namespace vorsim {

class KonfdServer {
public:
    using OnReport = std::function<void(const Report& report)>;

    KonfdServer(Loop& loop, konfd::Konfd& konfd, const std::string& path, OnReport on_report);

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
    bool answer(int descriptor, const std::vector<konfd::Reply>& replies);
    void drop_client(int descriptor);

    Loop& loop_;
    konfd::Konfd& konfd_;
    Listener listener_;
    OnReport on_report_;
    std::map<int, Client> clients_;
};

} // namespace vorsim
