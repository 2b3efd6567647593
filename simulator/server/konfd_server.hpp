// konfd_server.hpp: konfd's socket and its clients.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>

#include "faults/faults.hpp"
#include "konfd/session.hpp"
#include "sockets/unix_socket.hpp"

namespace vorsim::server {

// A text that a client sent, and the reply.
struct KonfdExchange {
    std::uint64_t client{}; // in order of connection
    std::chrono::system_clock::time_point arrived;
    konfd::Exchange exchange;
};

class KonfdServer {
public:
    // Records it, and may apply a fault to the answer.
    using OnExchange = std::function<faults::ReplyFault(KonfdExchange& exchange)>;

    KonfdServer(sockets::Loop& loop, konfd::Konfd& konfd, const std::string& path, OnExchange on_exchange);

private:
    // Nothing is received from a client with unread input or an unsent answer.
    struct Client {
        sockets::Descriptor socket;
        konfd::ClientSession session;
        std::uint64_t number{};
        sockets::Loop::Time since; // when it connected, or its last text was accepted
        std::chrono::system_clock::time_point arrived{};
        std::string input{};
        std::string output{};
        std::string rest{}; // of a split answer; nothing is received before it is sent
        sockets::Loop::Time rest_due{};
        bool answer_unread{};
        bool ended{}; // sends no more, or is gone

        std::optional<sockets::Loop::Time> slow_since() const { return since; }
    };
    using Clients = std::map<int, Client>;

    void welcome(sockets::Descriptor socket);
    void receive(int descriptor);
    // One text; then the managers have their turn.
    bool serve_one();
    void answer(Client& client, konfd::Exchange exchange);
    // Sends what can be sent, then reads on or drops the client.
    void carry_on(int descriptor);
    void drop_client(int descriptor);
    static std::optional<konfd::Time> deadline_of(const Client& client);
    std::optional<konfd::Time> deadline() const;
    void on_deadline();

    sockets::Loop& loop_;
    konfd::Konfd& konfd_;
    OnExchange on_exchange_;
    Clients clients_;
    std::deque<int> turns_;  // clients with input
    std::vector<int> fresh_; // those whose input came in this turn: messages sent before it are served first
    std::uint64_t welcomed_ = 0;
    sockets::Listener listener_;
};

} // namespace vorsim::server
