#include "process/konfd_server.hpp"

#include <algorithm>
#include <array>
#include <cerrno>

#include <sys/socket.h>

namespace vorsim {
namespace {

constexpr std::size_t most_clients = 64;

} // namespace

KonfdServer::KonfdServer(Loop& loop, konfd::Konfd& konfd, const std::string& path, OnReply on_reply)
    : loop_(loop), konfd_(konfd), listener_(path), on_reply_(std::move(on_reply))
{
    loop_.watch(listener_.descriptor(), [this] { accept_client(); });
}

void KonfdServer::accept_client()
{
    Descriptor socket = listener_.accept();
    const int descriptor = socket.get();
    if (descriptor < 0 || clients_.size() == most_clients) {
        return; // one too many finds its connection closed
    }
    clients_.emplace(descriptor, Client{std::move(socket), konfd::Session(konfd_)});
    loop_.watch(descriptor, [this, descriptor] { read_commands(descriptor); });
}

void KonfdServer::read_commands(int descriptor)
{
    konfd::Session& session = clients_.at(descriptor).session;
    const bool unread = answer_unread(descriptor);
    std::array<char, 4096> bytes{}; // at most so much before the others have their turn
    const ssize_t size = recv(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size > 0) {
        answer(descriptor, session.receive({bytes.data(), static_cast<std::size_t>(size)},
                                           std::chrono::steady_clock::now(), unread));
    } else if (size == 0) {
        if (answer(descriptor, session.end())) {
            drop_client(descriptor);
        }
    } else if (errno != EAGAIN && errno != EINTR) {
        drop_client(descriptor);
    }
}

bool KonfdServer::answer(int descriptor, std::vector<konfd::Reply> replies)
{
    using faults::Hearing;
    std::string answers;
    std::string rest; // of an answer that comes in halves, and what follows it
    bool hangs_up = false;
    for (konfd::Reply& reply : replies) {
        const Hearing hearing = on_reply_(reply);
        hangs_up = hangs_up || hearing == Hearing::hung_up;
        if (hearing == Hearing::never || hangs_up) {
            continue;
        }
        const bool halved = hearing == Hearing::split && !reply.answer.empty();
        const std::size_t first = halves_.has(descriptor) || !rest.empty() ? 0 : halved ? 1 : reply.answer.size();
        answers += reply.answer.substr(0, first);
        rest += reply.answer.substr(first);
    }
    if (!rest.empty()) {
        halves_.keep(descriptor, rest);
    }
    if (hangs_up) {
        send_now(descriptor, answers);
        drop_client(descriptor);
        return false;
    }
    if (!answers.empty() && !send_now(descriptor, answers)) {
        drop_client(descriptor);
        return false;
    }
    return true;
}

void KonfdServer::drop_client(int descriptor)
{
    loop_.forget(descriptor);
    halves_.forget(descriptor);
    clients_.erase(descriptor);
}

std::optional<konfd::Time> KonfdServer::deadline() const
{
    std::optional<konfd::Time> first = halves_.deadline();
    for (const auto& [descriptor, client] : clients_) {
        const auto deadline = client.session.deadline();
        if (deadline && (!first || *deadline < *first)) {
            first = deadline;
        }
    }
    return first;
}

void KonfdServer::on_deadline()
{
    halves_.on_deadline();
    const auto now = std::chrono::steady_clock::now();
    for (auto next = clients_.begin(); next != clients_.end();) {
        auto& [descriptor, client] = *next++; // answering may drop it
        if (client.session.deadline().value_or(konfd::Time::max()) <= now) {
            answer(descriptor, client.session.time_out());
        }
    }
}

} // namespace vorsim
