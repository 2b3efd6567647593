#include "process/unix_socket.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <fmt/format.h>

#include "text/text.hpp"

namespace vorsim {
namespace {

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

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error(fmt::format("{}: {}", what, std::strerror(errno)));
}

// Leaves the path free, or throws.
void clear_dead_owner(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        throw std::runtime_error(fmt::format("{} exists and is no socket", path));
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

Descriptor::~Descriptor()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

Descriptor open_own(const std::string& path)
{
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
    const auto trusted = [](const struct stat& status) { return status.st_uid == geteuid() || status.st_uid == 0; };
    struct stat status {};
    Descriptor file(open(path.c_str(), flags | O_NOFOLLOW, 0600));
    if (file.get() < 0 && errno == ELOOP && lstat(path.c_str(), &status) == 0 && trusted(status)) {
        file = Descriptor(open(path.c_str(), flags, 0600));
    }
    if (file.get() >= 0 && (fstat(file.get(), &status) != 0 || !trusted(status))) {
        file = Descriptor();
        errno = EPERM;
    }
    return file;
}

bool write_all(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return true;
}

Listener::Listener(std::string path) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
{
    const sockaddr_un address = address_of(path);
    spare_ = Descriptor(socket_.get() < 0 ? -1 : fcntl(socket_.get(), F_DUPFD_CLOEXEC, 0));
    if (spare_.get() < 0) {
        fail(fmt::format("no socket for {}", path));
    }
    clear_dead_owner(path);
    const mode_t before = umask(0077);
    const int bound = bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    umask(before);
    if (bound != 0) {
        fail(fmt::format("cannot bind {}", path));
    }
    path_ = std::move(path); // from here on it is ours to remove
    if (listen(socket_.get(), 16) != 0) {
        fail(fmt::format("cannot listen at {}", path_));
    }
}

Listener::~Listener()
{
    if (!path_.empty()) {
        unlink(path_.c_str());
    }
}

Descriptor Listener::accept()
{
    Descriptor client(accept4(socket_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (client.get() < 0 && (errno == EMFILE || errno == ENFILE)) { // it would wait, and wake the loop, for ever
        vor::print_line(stderr, fmt::format("vorsim: no descriptor left for a client of {}: it is let go", path_));
        spare_ = Descriptor();
        Descriptor(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        spare_ = Descriptor(fcntl(socket_.get(), F_DUPFD_CLOEXEC, 0));
    }
    return client;
}

Descriptor connect_to(const std::string& path)
{
    const sockaddr_un address = address_of(path);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (socket.get() < 0 || connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int error = errno;
        socket = Descriptor();
        errno = error;
    }
    return socket;
}

bool send_now(int descriptor, const std::string& bytes)
{
    return send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
           static_cast<ssize_t>(bytes.size());
}

} // namespace vorsim
