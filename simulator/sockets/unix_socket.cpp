#include "sockets/unix_socket.hpp"

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vorsim::sockets {
namespace {

constexpr std::chrono::milliseconds before_next_try{100};

sockaddr_un address_of(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        throw std::runtime_error(
            fmt::format("the socket path {} is too long: at most {} characters", path, sizeof address.sun_path - 1));
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

// Leaves the path free, or throws.
void clear_dead_owner(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        throw std::runtime_error(fmt::format("{} exists and is not a socket", path));
    }
    if (connect_to(path).get() >= 0 || errno != ECONNREFUSED) {
        throw InUse(fmt::format("{} is served by another process", path));
    }
    if (status.st_uid != geteuid()) {
        throw std::runtime_error(fmt::format("{} belongs to user {}", path, status.st_uid));
    }
    if (unlink(path.c_str()) != 0 && errno != ENOENT) {
        fail(fmt::format("cannot remove {}", path));
    }
}

} // namespace

Listener::Listener(Loop& loop, const std::string& path, MakeRoom make_room, OnClient on_client)
    : loop_(loop), socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)),
      make_room_(std::move(make_room)), on_client_(std::move(on_client))
{
    const sockaddr_un address = address_of(path);
    if (socket_.get() < 0) {
        fail(fmt::format("cannot create a socket for {}", path));
    }
    clear_dead_owner(path);
    const mode_t before = umask(0077);
    const int bound = bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    umask(before);
    if (bound != 0) {
        fail(fmt::format("cannot bind {}", path));
    }
    bound_.path = path; // from here on it is removed
    if (listen(socket_.get(), 16) != 0) {
        fail(fmt::format("cannot listen at {}", path));
    }
    open();
    loop_.at([this] { return opens_at_; }, [this] { open(); });
}

Listener::Bound::~Bound()
{
    if (!path.empty()) {
        unlink(path.c_str());
    }
}

void Listener::open()
{
    opens_at_.reset();
    loop_.watch(socket_.get(), [this] { accept_client(); });
}

void Listener::close_for_a_while()
{
    loop_.forget(socket_.get());
    opens_at_ = std::chrono::steady_clock::now() + before_next_try;
}

void Listener::accept_client()
{
    if (!make_room_(false)) {
        close_for_a_while();
        return;
    }
    Descriptor socket(accept4(socket_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (socket.get() >= 0) {
        on_client_(std::move(socket));
    } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        make_room_(true);
        close_for_a_while();
    }
}

Descriptor connect_to(const std::string& path, std::chrono::milliseconds within)
{
    const sockaddr_un address = address_of(path);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    timeval limit{};
    limit.tv_sec = static_cast<time_t>(within.count() / 1000);
    limit.tv_usec = static_cast<suseconds_t>(within.count() % 1000 * 1000);
    if (socket.get() < 0 || setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0 ||
        connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int error = errno;
        socket = Descriptor();
        errno = error;
    }
    return socket;
}

bool has_hung_up(int descriptor)
{
    pollfd polled{descriptor, 0, 0};
    return poll(&polled, 1, 0) == 1;
}

bool send_now(int descriptor, const std::string& bytes)
{
    return send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
           static_cast<ssize_t>(bytes.size());
}

} // namespace vorsim::sockets
