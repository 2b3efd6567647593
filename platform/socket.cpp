// Stream sockets to daemons such as konfd. Nothing here blocks for longer than
// VORINFRA_TIMEOUT_MS.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

#include "directory.hpp"
#include "log.hpp"
#include "settings.hpp"
#include "system.hpp"

using namespace vorinfra;

void* vor_socket_create(vor_uchar domain, vor_uchar type, vor_uchar protocol)
{
    if (domain != 1 || type != 1 || protocol != 0) {
        report("cannot create a socket of domain %u, type %u, protocol %u: only Unix streams (1, 1, 0)", domain, type,
               protocol);
        return nullptr;
    }
    if (!timeout_milliseconds()) {
        return nullptr;
    }
    auto* const created = static_cast<VOR_UNIX_SOCKET*>(calloc(1, sizeof(VOR_UNIX_SOCKET)));
    Descriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (created == nullptr || !descriptor) {
        report("cannot create a socket: %s", strerror(errno));
        free(created);
        return nullptr;
    }
    *created = {descriptor.release(), domain, type, nullptr};
    return created;
}

vor_int32 vor_socket_config_unix(void* socket, vor_char* path)
{
    auto* const configured = static_cast<VOR_UNIX_SOCKET*>(socket);
    char rooted[socket_path_size];
    if (configured == nullptr || path == nullptr || vorinfra_rooted_path(path, rooted, sizeof rooted) != 0) {
        return -1;
    }
    char* const copy = strdup(rooted);
    if (copy == nullptr) {
        return -1;
    }
    free(configured->sock_path);
    configured->sock_path = copy;
    return 0;
}

namespace {

// Whoever creates the socket's file first would receive stored secrets.
bool is_trusted(int descriptor, const char* path)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        report("cannot find out who serves %s: %s", path, strerror(errno));
        return false;
    }
    if (peer.uid != geteuid() && peer.uid != 0) {
        report("%s is served by user %u, not by user %u or root; nothing is sent there", path,
               static_cast<unsigned>(peer.uid), static_cast<unsigned>(geteuid()));
        return false;
    }
    return true;
}

} // namespace

vor_int32 vor_socket_connect(void* socket, vor_uchar)
{
    const auto* const connected = static_cast<VOR_UNIX_SOCKET*>(socket);
    const auto timeout = timeout_milliseconds();
    if (connected == nullptr || connected->sock_path == nullptr || !timeout) {
        return -1;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strcpy(address.sun_path, connected->sock_path);
    const Deadline deadline(*timeout);
    int result = -1;
    int left = *timeout;
    do { // after a signal, for what is left of the time
        limit_blocking(connected->sock_fd, SO_SNDTIMEO, left);
        result = connect(connected->sock_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    } while (result != 0 && errno == EINTR && (left = deadline.remaining()) > 0);
    return result == 0 && is_trusted(connected->sock_fd, connected->sock_path) ? 0 : -1;
}

vor_int32 vor_socket_close(void* socket, vor_uchar)
{
    auto* const closed = static_cast<VOR_UNIX_SOCKET*>(socket);
    if (closed == nullptr) {
        return -1;
    }
    const int result = close(closed->sock_fd);
    free(closed->sock_path);
    free(closed);
    return result;
}

namespace {

// Whether a failed operation is to be retried.
bool try_again(vor_int32 fd, short events, int flags, const Deadline& deadline)
{
    if (errno == EINTR) {
        return deadline.remaining() > 0;
    }
    return errno == EAGAIN && (flags & MSG_DONTWAIT) == 0 && deadline.wait(fd, events);
}

} // namespace

// The whole buffer or -1.
vor_int32 vor_send(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    const auto timeout = timeout_milliseconds();
    if (!timeout || count < 0) {
        return -1;
    }
    const Deadline deadline(*timeout);
    const char* const bytes = static_cast<const char*>(buffer);
    vor_int32 written = 0;
    while (written < count) {
        const ssize_t sent =
            send(fd, bytes + written, static_cast<size_t>(count - written), flags | MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            written += static_cast<vor_int32>(sent);
        } else if (!try_again(fd, POLLOUT, flags, deadline)) {
            return -1;
        }
    }
    return written;
}

vor_int32 vor_recv(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    const auto timeout = timeout_milliseconds();
    if (!timeout || count < 0) {
        return -1;
    }
    const Deadline deadline(*timeout);
    ssize_t received;
    do {
        received = recv(fd, buffer, static_cast<size_t>(count), flags | MSG_DONTWAIT);
    } while (received < 0 && try_again(fd, POLLIN, flags, deadline));
    if (received < 0 && errno == EAGAIN && (flags & MSG_DONTWAIT) == 0) {
        shutdown(fd, SHUT_RDWR); // a late answer would be taken for that to the next query
    }
    return static_cast<vor_int32>(received);
}
