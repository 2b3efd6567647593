#include "client/ask.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include <poll.h>
#include <sys/socket.h>

#include <fmt/core.h>

#include "server/commands.hpp"
#include "server/control.hpp"
#include "server/options.hpp"

namespace vorsim::client {
namespace {

using std::chrono::milliseconds;

// The result; throws the error that the answer holds instead.
std::string checked(const std::string& answer)
{
    const std::string text = answer.substr(1);
    const std::string error = text.substr(0, text.find_last_not_of('\n') + 1);
    switch (answer.front()) {
    case '+':
        return text;
    case '?':
        throw server::UsageError(error);
    default:
        throw std::runtime_error(error);
    }
}

std::runtime_error unavailable(std::string_view what)
{
    return std::runtime_error(fmt::format("vorsim in {} {}", server::directory(), what));
}

} // namespace

Connection::Connection(const std::string& line, milliseconds within, const std::optional<std::string>& document)
    : socket_(sockets::connect_to(server::control_path(server::directory()), within))
{
    const int why = errno;
    if (line.find_first_of(std::string_view("\n\0", 2)) != line.npos) { // they would end it
        server::refuse_line();
    }
    if (socket_.get() < 0) {
        server::parse_command(document ? line + '\n' + *document : line); // its errors come first
        if (why == EAGAIN) {
            throw unavailable("does not answer");
        }
        throw NotRunning(
            fmt::format("nothing listens in {}\nhint: start vorsim, or set VORINFRA_DIR", server::directory()));
    }
    const std::string request = (document ? line + '\n' + *document : line) + '\0';
    if (request.size() > server::longest_request) {
        throw std::runtime_error(fmt::format("the file is too large: {} bytes of settings, at most {}",
                                             document.value_or("").size(), server::longest_request));
    }
    for (std::size_t at = 0; at < request.size();) {
        pollfd room{socket_.get(), POLLOUT, 0};
        if (poll(&room, 1, static_cast<int>(within.count())) == 0) {
            throw unavailable("does not answer");
        }
        const ssize_t sent = send(socket_.get(), request.data() + at, request.size() - at, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN && errno != EINTR) {
            throw unavailable("closed the connection");
        }
        at += sent > 0 ? static_cast<std::size_t>(sent) : 0;
    }
}

std::optional<std::string> Connection::receive(milliseconds within)
{
    pollfd waiting{socket_.get(), POLLIN, 0};
    std::array<char, 65536> bytes; // NOLINT: filled by the receive
    if (poll(&waiting, 1, static_cast<int>(std::min<std::int64_t>(within.count(), INT_MAX))) != 1) {
        return {};
    }
    const ssize_t size = recv(socket_.get(), bytes.data(), bytes.size(), 0);
    return std::string(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
}

bool EventStream::read(const OnLine& on_line)
{
    const auto received = connection_.receive(begun_ ? milliseconds(-1) : within_);
    if (!received) {
        throw unavailable("does not answer");
    }
    const std::string& more = *received;
    text_ += more;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text_.find('\n', begin)) != text_.npos; begin = end + 1) {
        const std::string line = text_.substr(begin, end - begin);
        if (begun_) {
            on_line(Kind{line.front()}, std::string_view(line).substr(1));
        } else {
            checked(line);
        }
        begun_ = true;
    }
    text_.erase(0, begin);
    return !more.empty();
}

std::string ask(const std::string& line, const std::optional<std::string>& document, milliseconds within)
{
    Connection asked(line, within, document);
    std::string answer;
    auto more = asked.receive(within);
    for (; more && !more->empty(); more = asked.receive(within)) {
        answer += *more;
    }
    if (!more || answer.empty()) {
        throw unavailable(more ? "stopped" : "does not answer");
    }
    if (answer.back() != '\0') {
        throw unavailable("closed the connection within its answer");
    }
    answer.pop_back();
    return checked(answer);
}

} // namespace vorsim::client
