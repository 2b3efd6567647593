#include "server/konfd_server.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace vorsim::server {
namespace {

constexpr std::size_t most_konfd_clients = 64;
constexpr std::chrono::milliseconds between_looks{10};

// Bytes sent that the client has not received yet.
bool answer_unread(int descriptor)
{
    int bytes = 0;
    return ioctl(descriptor, SIOCOUTQ, &bytes) == 0 && bytes > 0;
}

} // namespace

KonfdServer::KonfdServer(sockets::Loop& loop, konfd::Konfd& konfd, const std::string& path, OnExchange on_exchange)
    : loop_(loop), konfd_(konfd), on_exchange_(std::move(on_exchange)),
      listener_(
          loop, path,
          [this](bool no_descriptor) {
              return sockets::make_room_among(clients_, most_konfd_clients, no_descriptor,
                                              [this](int descriptor) { drop_client(descriptor); });
          },
          [this](sockets::Descriptor socket) { welcome(std::move(socket)); })
{
    loop_.in_turn([this] { return serve_one(); });
    loop_.at([this] { return deadline(); }, [this] { on_deadline(); });
}

void KonfdServer::welcome(sockets::Descriptor socket)
{
    const int descriptor = socket.get();
    clients_.emplace(descriptor, Client{.socket = std::move(socket),
                                        .session = konfd::ClientSession(konfd_),
                                        .number = ++welcomed_,
                                        .since = std::chrono::steady_clock::now()});
    loop_.watch(descriptor, [this, descriptor] { receive(descriptor); });
}

void KonfdServer::receive(int descriptor)
{
    Client& client = clients_.at(descriptor);
    client.answer_unread = answer_unread(descriptor);
    std::array<char, 4096> bytes{};
    const ssize_t size = recv(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size < 0) {
        if (errno != EAGAIN && errno != EINTR) {
            drop_client(descriptor);
        }
        return;
    }
    client.arrived = std::chrono::system_clock::now();
    client.input.assign(bytes.data(), static_cast<std::size_t>(size));
    client.ended = size == 0;
    loop_.forget(descriptor);
    fresh_.push_back(descriptor);
}

bool KonfdServer::serve_one()
{
    const auto come = std::exchange(fresh_, {});
    if (turns_.empty()) {
        turns_.assign(come.begin(), come.end());
        return !turns_.empty();
    }
    turns_.insert(turns_.end(), come.begin(), come.end());
    const int descriptor = turns_.front();
    turns_.pop_front();
    Client& client = clients_.at(descriptor);
    std::string_view bytes = client.input;
    auto exchange = bytes.empty()
                        ? client.session.end()
                        : client.session.receive(bytes, std::chrono::steady_clock::now(), client.answer_unread);
    client.input.erase(0, client.input.size() - bytes.size());
    if (exchange) {
        answer(client, std::move(*exchange));
    }
    carry_on(descriptor);
    return !turns_.empty();
}

void KonfdServer::answer(Client& client, konfd::Exchange exchange)
{
    client.since = exchange.reply.record.complained ? client.since : std::chrono::steady_clock::now();
    client.ended = client.ended || exchange.too_slow;
    KonfdExchange whole{client.number, client.arrived, std::move(exchange)};
    const faults::ReplyFault fault = on_exchange_(whole);
    const std::string& answer = whole.exchange.reply.answer;
    switch (fault) {
    case faults::ReplyFault::never:
        break;
    case faults::ReplyFault::hung_up:
        client.input.clear();
        client.ended = true;
        break;
    default:
        if (fault == faults::ReplyFault::split && !answer.empty()) {
            client.output += answer.front();
            client.rest = answer.substr(1);
            client.rest_due = std::chrono::steady_clock::now() + between_looks;
        } else {
            client.output += answer;
        }
    }
}

void KonfdServer::carry_on(int descriptor)
{
    Client& client = clients_.at(descriptor);
    if (!client.output.empty()) {
        const ssize_t sent = send(descriptor, client.output.data(), client.output.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN && errno != EINTR) {
            client.ended = true; // what it has already sent is still executed
            client.output.clear();
        }
        client.output.erase(0, static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    }
    if (!client.output.empty()) {
        loop_.watch_writing(descriptor, [this, descriptor] { carry_on(descriptor); });
    } else if (!client.rest.empty()) {
        loop_.forget(descriptor);
    } else if (!client.input.empty()) {
        loop_.forget(descriptor);
        turns_.push_back(descriptor);
    } else if (client.ended) {
        drop_client(descriptor);
    } else {
        loop_.watch(descriptor, [this, descriptor] { receive(descriptor); });
    }
}

void KonfdServer::drop_client(int descriptor)
{
    loop_.forget(descriptor);
    std::erase(turns_, descriptor);
    std::erase(fresh_, descriptor);
    clients_.erase(descriptor);
}

// A client with unread input gets a turn instead.
std::optional<konfd::Time> KonfdServer::deadline_of(const Client& client)
{
    if (!client.rest.empty()) {
        return client.rest_due;
    }
    return client.input.empty() && !client.ended ? client.session.deadline() : std::nullopt;
}

std::optional<konfd::Time> KonfdServer::deadline() const
{
    return sockets::earliest(clients_, [](const auto& one) { return deadline_of(one.second); });
}

// Executes a text whose sender left it without an end; one at a time, as above. Or polls whether the first part of a
// split answer was read: there is no event for that.
void KonfdServer::on_deadline()
{
    const auto first = deadline();
    const auto late =
        std::ranges::find_if(clients_, [&first](const auto& one) { return first && deadline_of(one.second) == first; });
    if (late == clients_.end()) {
        return;
    }
    auto& [descriptor, client] = *late;
    if (!client.rest.empty()) {
        client.rest_due = std::chrono::steady_clock::now() + between_looks;
        if (client.output.empty() && !answer_unread(descriptor)) {
            client.output = std::exchange(client.rest, {});
        }
    } else if (auto exchange = client.session.time_out()) {
        answer(client, std::move(*exchange));
    }
    carry_on(descriptor);
}

} // namespace vorsim::server
