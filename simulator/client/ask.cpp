#include "client/ask.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include <poll.h>
#include <sys/socket.h>

#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "server/control.hpp"
#include "server/options.hpp"
#include "text/json.hpp"

namespace vorsim::client {
namespace {

constexpr std::chrono::milliseconds patience{10000};

}

std::string directory()
{
    const char* const directory = vorinfra_directory();
    if (directory == nullptr) {
        throw UsageError("the platform directory cannot be used");
    }
    return directory;
}

Asked::Asked(const vor::Json& request) : socket_(connect_to(control_path(directory())))
{
    if (socket_.get() < 0) {
        throw std::runtime_error(fmt::format("no vorsim runs in {}", directory()));
    }
    const std::string line = vor::dump(request) + "\n";
    for (std::size_t at = 0; at < line.size();) {
        pollfd room{socket_.get(), POLLOUT, 0};
        const bool ready = poll(&room, 1, static_cast<int>(patience.count())) == 1;
        const ssize_t sent =
            ready ? send(socket_.get(), line.data() + at, line.size() - at, MSG_NOSIGNAL | MSG_DONTWAIT) : -1;
        if (sent < 0 && errno != EAGAIN && errno != EINTR) {
            throw std::runtime_error(fmt::format("the vorsim in {} does not listen", directory()));
        }
        at += sent > 0 ? static_cast<std::size_t>(sent) : 0;
    }
}

std::string Asked::receive(std::chrono::milliseconds within)
{
    pollfd waiting{socket_.get(), POLLIN, 0};
    std::array<char, 65536> bytes; // NOLINT: filled by the receive
    if (poll(&waiting, 1, static_cast<int>(std::min<std::int64_t>(within.count(), INT_MAX))) != 1) {
        throw std::runtime_error(fmt::format("the vorsim in {} does not answer", directory()));
    }
    const ssize_t size = recv(socket_.get(), bytes.data(), bytes.size(), 0);
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

Watch::Watch() : asked_(vor::Json({{"do", "watch"}})) {}

bool Watch::read(const std::function<void(const Line& line)>& on_line)
{
    const std::string more = asked_.receive(std::chrono::milliseconds(-1));
    text_ += more;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text_.find('\n', begin)) != text_.npos; begin = end + 1) {
        const std::string line = text_.substr(begin, end - begin);
        if (begun_) {
            on_line(read_line(line));
        } else if (line != "+") {
            throw std::runtime_error(line.substr(1));
        }
        begun_ = true;
    }
    text_.erase(0, begin);
    return !more.empty();
}

std::string ask(const vor::Json& request)
{
    Asked asked(request);
    std::string answer;
    for (std::string more = asked.receive(patience); !more.empty(); more = asked.receive(patience)) {
        answer += more;
    }
    if (answer.empty() || answer[0] == '-') {
        throw std::runtime_error(answer.empty() ? fmt::format("the vorsim in {} does not answer", directory())
                                                : answer.substr(1, answer.find('\n') - 1));
    }
    return answer.substr(1);
}

} // namespace vorsim::client
