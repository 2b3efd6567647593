#include "process/control.hpp"

#include <array>
#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/time.h>

#include <fmt/format.h>

namespace vorsim {
namespace {

constexpr std::size_t most_clients = 16;
constexpr std::size_t longest_request = 4096;

} // namespace

std::string control_path(const std::string& directory)
{
    return fmt::format("{}/vorsim.control", directory);
}

Control::Control(Loop& loop, const std::string& path, Handler answer_to)
    : loop_(loop), listener_(path), answer_to_(std::move(answer_to))
{
    loop_.watch(listener_.descriptor(), [this] { accept_client(); });
}

void Control::accept_client()
{
    Descriptor socket = listener_.accept();
    const int descriptor = socket.get();
    if (descriptor < 0 || clients_.size() == most_clients) {
        return;
    }
    clients_.emplace(descriptor, Client{std::move(socket), {}, {}});
    loop_.watch(descriptor, [this, descriptor] { read_request(descriptor); });
}

void Control::read_request(int descriptor)
{
    Client& client = clients_.at(descriptor);
    std::array<char, longest_request> bytes{};
    const ssize_t size = recv(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    client.request.append(bytes.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    const std::size_t end = client.request.find('\n');
    if (end == client.request.npos) {
        if (size <= 0 || client.request.size() > longest_request) {
            drop_client(descriptor);
        }
        return;
    }
    client.answer = answer_to_(std::string_view(client.request).substr(0, end));
    loop_.watch_writing(descriptor, [this, descriptor] { write_answer(descriptor); });
}

void Control::write_answer(int descriptor)
{
    std::string& answer = clients_.at(descriptor).answer;
    const ssize_t sent = send(descriptor, answer.data(), answer.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (sent < 0 || static_cast<std::size_t>(sent) == answer.size()) {
        drop_client(descriptor);
        return;
    }
    answer.erase(0, static_cast<std::size_t>(sent));
}

void Control::drop_client(int descriptor)
{
    loop_.forget(descriptor);
    clients_.erase(descriptor);
}

std::string ask_running(const std::string& directory, const std::string& request)
{
    const Descriptor socket = connect_to(control_path(directory));
    if (socket.get() < 0) {
        throw std::runtime_error(fmt::format("no vorsim runs in {}", directory));
    }
    const timeval limit{5, 0};
    setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    if (!send_now(socket.get(), request + "\n")) {
        throw std::runtime_error(fmt::format("the vorsim in {} does not listen", directory));
    }
    std::string answer;
    std::array<char, 4096> bytes{};
    ssize_t size = 0;
    while ((size = recv(socket.get(), bytes.data(), bytes.size(), 0)) > 0) {
        answer.append(bytes.data(), static_cast<std::size_t>(size));
    }
    if (size < 0 || answer.empty()) {
        throw std::runtime_error(fmt::format("the vorsim in {} does not answer", directory));
    }
    return answer;
}

} // namespace vorsim
