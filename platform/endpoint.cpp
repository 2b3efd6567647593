#include "endpoint.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "log.hpp"
#include "pool.hpp"
#include "settings.hpp"

namespace vorinfra {

namespace {

pthread_mutex_t guard = PTHREAD_MUTEX_INITIALIZER;
Endpoint* endpoints; // the newest first

Endpoint** link_to(const VOR_IPC_HANDLE* handle)
{
    Endpoint** link = &endpoints;
    while (*link != nullptr && &(*link)->handle != handle) {
        link = &(*link)->next;
    }
    return link;
}

} // namespace

Endpoint* bound_endpoint(const VOR_IPC_HANDLE* handle, const char* operation)
{
    Endpoint* endpoint;
    {
        const Lock lock(guard);
        endpoint = *link_to(handle);
    }
    if (endpoint == nullptr) {
        report("%s: the handle is not bound", operation);
    }
    return endpoint;
}

const Endpoint* newest_endpoint()
{
    const Lock lock(guard);
    const Endpoint* own = endpoints;
    while (own != nullptr && pthread_equal(own->binder, pthread_self()) == 0) {
        own = own->next;
    }
    return own != nullptr ? own : endpoints;
}

namespace {

// The process that holds the lock on a file, from /proc/locks; 0 if it was released.
int lock_holder(int descriptor)
{
    struct stat status;
    std::FILE* const locks = std::fopen("/proc/locks", "re");
    if (locks == nullptr || fstat(descriptor, &status) != 0) {
        return 0;
    }
    char line[256];
    int holder = 0;
    while (holder == 0 && std::fgets(line, sizeof line, locks) != nullptr) {
        int process;
        unsigned long inode;
        if (std::sscanf(line, "%*d: FLOCK %*s %*s %d %*x:%*x:%lu", &process, &inode) == 2 && inode == status.st_ino) {
            holder = process;
        }
    }
    std::fclose(locks);
    return holder;
}

// Binding locks the directory for a moment. A process that was stopped just then keeps the lock.
bool lock(int directory, const Endpoint& endpoint)
{
    constexpr timespec moment{0, 2'000'000};
    const Deadline deadline(endpoint.timeout);
    while (flock(directory, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || deadline.remaining() <= 0) {
            report("cannot bind SAP %u: process %d has locked the directory %s", endpoint.handle.sap_id,
                   lock_holder(directory), endpoint.directory);
            return false;
        }
        nanosleep(&moment, nullptr);
    }
    return true;
}

// Removes the socket of an owner that died.
bool vacate(const sockaddr_un& address, vor_uint16 sap)
{
    struct stat status;
    if (lstat(address.sun_path, &status) != 0) {
        return errno == ENOENT;
    }
    if (!S_ISSOCK(status.st_mode)) {
        report("cannot bind SAP %u: %s is not a socket", sap, address.sun_path);
        return false;
    }
    const Descriptor probe(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!probe) {
        report("cannot bind SAP %u: %s", sap, strerror(errno));
        return false;
    }
    const auto* const target = reinterpret_cast<const sockaddr*>(&address);
    if (connect(probe.get(), target, sizeof address) == 0 || errno != ECONNREFUSED) {
        report("cannot bind SAP %u: it is in use (%s)", sap, address.sun_path);
        return false;
    }
    return unlink(address.sun_path) == 0;
}

// The lock on the directory keeps two processes from replacing one dead owner.
bool bind_socket(Endpoint& endpoint)
{
    const Descriptor directory(open_directory(endpoint.directory));
    if (!directory) {
        return false;
    }
    if (!lock(directory.get(), endpoint)) {
        return false;
    }
    const vor_uint16 sap = endpoint.handle.sap_id;
    const sockaddr_un address = sap_address(endpoint.directory, sap);
    struct stat status;
    if (!vacate(address, sap)) {
        return false;
    }
    if (bind(endpoint.descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        lstat(address.sun_path, &status) != 0) {
        report("cannot bind SAP %u to %s: %s", sap, address.sun_path, strerror(errno));
        return false;
    }
    endpoint.device = status.st_dev;
    endpoint.inode = status.st_ino;
    return true;
}

// Late answers to an earlier process on this SAP must not match the first
// requests of this one.
vor_uint16 random_sequence()
{
    vor_uint16 sequence = static_cast<vor_uint16>(getpid());
    return getrandom(&sequence, sizeof sequence, GRND_NONBLOCK) < 0 ? static_cast<vor_uint16>(getpid()) : sequence;
}

bool open_endpoint(Endpoint& endpoint, vor_uint16 sap, vor_uint16 bind_option)
{
    const auto timeout = timeout_milliseconds();
    if (!timeout || !log_levels() || !timers_run()) {
        return false;
    }
    Descriptor descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!descriptor || !limit_blocking(descriptor.get(), SO_RCVTIMEO, *timeout) ||
        !limit_blocking(descriptor.get(), SO_SNDTIMEO, *timeout)) {
        report("cannot bind SAP %u: %s", sap, strerror(errno));
        return false;
    }
    endpoint.handle = {sap, bind_option, &endpoint};
    endpoint.descriptor = descriptor.get();
    endpoint.timeout = *timeout;
    endpoint.binder = pthread_self();
    endpoint.sequence = random_sequence();
    if (!bind_socket(endpoint)) {
        return false;
    }
    descriptor.release();
    return true;
}

} // namespace

} // namespace vorinfra

using namespace vorinfra;

VOR_IPC_HANDLE* vor_ipc_bind(vor_uint16 sap, vor_uint16 bind_option)
{
    auto* const endpoint = static_cast<Endpoint*>(calloc(1, sizeof(Endpoint)));
    if (endpoint == nullptr || !open_endpoint(*endpoint, sap, bind_option)) {
        free(endpoint);
        return nullptr;
    }
    const Lock lock(guard);
    endpoint->next = endpoints;
    endpoints = endpoint;
    return &endpoint->handle;
}

// 1: unbound; 0: it was not bound.
vor_bool vor_ipc_unbind(VOR_IPC_HANDLE* handle)
{
    if (handle == nullptr) {
        return 0;
    }
    Endpoint* const endpoint = bound_endpoint(handle, "vor_ipc_unbind");
    if (endpoint == nullptr) {
        return 0;
    }
    {
        const Lock lock(guard);
        *link_to(handle) = endpoint->next;
    }
    take_back_buffers(endpoint);
    const sockaddr_un address = sap_address(endpoint->directory, handle->sap_id);
    struct stat status;
    if (lstat(address.sun_path, &status) == 0 && status.st_dev == endpoint->device &&
        status.st_ino == endpoint->inode) {
        unlink(address.sun_path);
    }
    close(endpoint->descriptor);
    free(endpoint);
    return 1;
}

int vorinfra_descriptor(const VOR_IPC_HANDLE* handle)
{
    const Endpoint* const endpoint = handle != nullptr ? bound_endpoint(handle, "vorinfra_descriptor") : nullptr;
    return endpoint != nullptr ? endpoint->descriptor : -1;
}
