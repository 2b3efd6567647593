#include "control.hpp"

#include <array>
#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/time.h>

namespace vorsim {
namespace {

constexpr std::size_t most_clients = 16;
constexpr std::size_t longest_request = 64;

} // namespace

std::string control_path(const std::string& directory)
{
    return directory + "/vorsim.control";
}

Control::Control(Loop& loop, const std::string& path, Answer answer)
    : loop_(loop), listener_(path), answer_(std::move(answer))
{
    loop_.watch(listener_.descriptor(), [this] { welcome(); });
}

void Control::welcome()
{
    Descriptor socket = listener_.accept();
    const int descriptor = socket.get();
    if (descriptor < 0 || clients_.size() == most_clients) {
        return;
    }
    clients_.emplace(descriptor, Client{std::move(socket), {}, {}});
    loop_.watch(descriptor, [this, descriptor] { hear(descriptor); });
}

void Control::hear(int descriptor)
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
            part_from(descriptor);
        }
        return;
    }
    client.answer = answer_(std::string_view(client.request).substr(0, end));
    loop_.watch_writing(descriptor, [this, descriptor] { tell(descriptor); });
}

void Control::tell(int descriptor)
{
    std::string& answer = clients_.at(descriptor).answer;
    const ssize_t sent = send(descriptor, answer.data(), answer.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (sent < 0 || static_cast<std::size_t>(sent) == answer.size()) {
        part_from(descriptor);
        return;
    }
    answer.erase(0, static_cast<std::size_t>(sent));
}

void Control::part_from(int descriptor)
{
    loop_.forget(descriptor);
    clients_.erase(descriptor);
}

std::string ask_running(const std::string& directory, const std::string& request)
{
    const Descriptor socket = connect_to(control_path(directory));
    if (socket.get() < 0) {
        throw std::runtime_error("no vorsim runs in " + directory);
    }
    const timeval limit{5, 0};
    setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    if (!send_now(socket.get(), request + "\n")) {
        throw std::runtime_error("the vorsim in " + directory + " does not listen");
    }
    std::string answer;
    std::array<char, 4096> bytes{};
    ssize_t size = 0;
    while ((size = recv(socket.get(), bytes.data(), bytes.size(), 0)) > 0) {
        answer.append(bytes.data(), static_cast<std::size_t>(size));
    }
    if (size < 0 || answer.empty()) {
        throw std::runtime_error("the vorsim in " + directory + " does not answer");
    }
    return answer;
}

} // namespace vorsim
