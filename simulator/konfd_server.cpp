#include "konfd_server.hpp"

#include <algorithm>
#include <array>
#include <cerrno>

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace vorsim {
namespace {

constexpr std::size_t most_clients = 64;

/* Bytes sent that the client has not received yet. */
bool answer_unread(int descriptor)
{
    int bytes = 0;
    return ioctl(descriptor, SIOCOUTQ, &bytes) == 0 && bytes > 0;
}

} // namespace

KonfdServer::KonfdServer(Loop& loop, konfd::Konfd& konfd, const std::string& path, Report report)
    : loop_(loop), konfd_(konfd), listener_(path), report_(std::move(report))
{
    loop_.watch(listener_.descriptor(), [this] { welcome(); });
}

void KonfdServer::welcome()
{
    Descriptor socket = listener_.accept();
    const int descriptor = socket.get();
    if (descriptor < 0 || clients_.size() == most_clients) {
        return; // one too many finds its connection closed
    }
    clients_.emplace(descriptor, Client{std::move(socket), konfd::Session(konfd_)});
    loop_.watch(descriptor, [this, descriptor] { hear(descriptor); });
}

void KonfdServer::hear(int descriptor)
{
    konfd::Session& session = clients_.at(descriptor).session;
    const bool unread = answer_unread(descriptor);
    std::array<char, 4096> bytes{}; // at most so much before the others have their turn
    const ssize_t size = recv(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size > 0) {
        answer(descriptor,
               session.feed({bytes.data(), static_cast<std::size_t>(size)}, std::chrono::steady_clock::now(), unread));
    } else if (size == 0) {
        if (answer(descriptor, session.end())) {
            part_from(descriptor);
        }
    } else if (errno != EAGAIN && errno != EINTR) {
        part_from(descriptor);
    }
}

bool KonfdServer::answer(int descriptor, const std::vector<konfd::Verdict>& verdicts)
{
    std::string answers;
    for (const konfd::Verdict& verdict : verdicts) {
        report_(verdict);
        answers += verdict.answer;
    }
    if (!answers.empty() && !send_now(descriptor, answers)) {
        part_from(descriptor);
        return false;
    }
    return true;
}

void KonfdServer::part_from(int descriptor)
{
    loop_.forget(descriptor);
    clients_.erase(descriptor);
}

std::optional<konfd::Time> KonfdServer::deadline() const
{
    std::optional<konfd::Time> first;
    for (const auto& [descriptor, client] : clients_) {
        const auto deadline = client.session.deadline();
        if (deadline && (!first || *deadline < *first)) {
            first = deadline;
        }
    }
    return first;
}

void KonfdServer::keep_time()
{
    const auto now = std::chrono::steady_clock::now();
    for (auto next = clients_.begin(); next != clients_.end();) {
        auto& [descriptor, client] = *next++; // answering may part from it
        if (client.session.deadline().value_or(konfd::Time::max()) <= now) {
            answer(descriptor, client.session.fall_quiet());
        }
    }
}

} // namespace vorsim
