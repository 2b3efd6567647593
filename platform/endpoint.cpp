#include "endpoint.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

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

void report_unbound(const char* operation)
{
    report("%s: the handle is not bound", operation);
}

// The calling thread's number; asked for once.
thread_local pid_t thread_number;

pid_t own_thread()
{
    if (thread_number == 0) {
        thread_number = gettid();
    }
    return thread_number;
}

// A child of a fork begins with endpoints that are another's, and that no thread of its own uses.
void inherit()
{
    thread_number = 0;
    for (Endpoint* endpoint = endpoints; endpoint != nullptr; endpoint = endpoint->next) {
        endpoint->user = 0;
        endpoint->inherited = true;
        endpoint->awaited = false;
    }
    pthread_mutex_unlock(&guard);
}

[[maybe_unused]] const int at_fork =
    pthread_atfork([] { pthread_mutex_lock(&guard); }, [] { pthread_mutex_unlock(&guard); }, inherit);

// What someone has put in its place is not.
bool has_socket_file(const Endpoint& endpoint)
{
    const sockaddr_un address = sap_address(endpoint.directory, endpoint.handle.sap_id);
    struct stat status;
    return lstat(address.sun_path, &status) == 0 && status.st_dev == endpoint.device && status.st_ino == endpoint.inode;
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
        report_unbound(operation);
    }
    return endpoint;
}

// A thread that ended in the middle of an operation does not keep the endpoint, nor does one that left it by a jump.
// For a moment a thread that has been joined still looks alive.
Use::Use(const VOR_IPC_HANDLE* handle, const char* operation)
{
    constexpr timespec moment{0, 1'000'000};
    const pid_t self = own_thread();
    pid_t user = 0;
    bool alone = false;
    bool unsure = false;
    for (int moments = 0; moments == 0 || unsure; moments++) {
        if (unsure) {
            nanosleep(&moment, nullptr);
        }
        const Lock lock(guard);
        endpoint_ = *link_to(handle);
        if (endpoint_ == nullptr) {
            break;
        }
        const pid_t now = endpoint_->user.load(std::memory_order_acquire);
        user = moments == 0 ? now : user;
        alone = now == user && (user == 0 || user == self || tgkill(getpid(), user, 0) != 0);
        unsure = now == user && !alone && moments < 20;
        if (alone) {
            endpoint_->user.store(self, std::memory_order_relaxed);
        }
    }
    if (endpoint_ == nullptr) {
        report_unbound(operation);
    } else if (!alone) {
        report("SAP %u: %s in thread %d refused, thread %d is using the endpoint: let one thread at a time make calls",
               endpoint_->handle.sap_id, operation, self, user);
        endpoint_ = nullptr;
        errno = EBUSY;
    }
}

bool is_ours(Endpoint& endpoint, const char* operation)
{
    constexpr int to_end = 1000; // milliseconds; a parent that leaves its work to a child ends at once
    if (!endpoint.inherited) {
        return true;
    }
    if (!endpoint.owner->take_over(endpoint.awaited ? 0 : std::min(to_end, endpoint.timeout))) {
        endpoint.awaited = true;
        report("SAP %u: %s refused, the SAP belongs to process %d: a forked process must bind its own",
               endpoint.handle.sap_id, operation, endpoint.owner->process());
    } else if (!has_socket_file(endpoint)) {
        report("SAP %u: %s refused, its socket was removed: unbind the SAP and bind it again", endpoint.handle.sap_id,
               operation);
    } else {
        endpoint.inherited = false;
        return true;
    }
    errno = EBUSY;
    return false;
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

// The process that holds the lock on a file, from /proc/locks; 0 if it was released or cannot be seen from here.
int lock_holder(int descriptor)
{
    struct stat status;
    std::FILE* const locks = fstat(descriptor, &status) == 0 ? std::fopen("/proc/locks", "re") : nullptr;
    if (locks == nullptr) {
        return 0;
    }
    char line[256];
    int holder = 0;
    while (holder == 0 && std::fgets(line, sizeof line, locks) != nullptr) {
        int process;
        unsigned major;
        unsigned minor;
        unsigned long inode;
        if (std::sscanf(line, "%*d: FLOCK %*s %*s %d %x:%x:%lu", &process, &major, &minor, &inode) == 4 &&
            inode == status.st_ino && makedev(major, minor) == status.st_dev) {
            holder = process;
        }
    }
    std::fclose(locks);
    return holder;
}

void report_locked(int directory, const Endpoint& endpoint)
{
    const int holder = lock_holder(directory);
    char text[64]; // the file's name, then the process
    snprintf(text, sizeof text, "/proc/%d/comm", holder);
    char name[32] = "";
    if (std::FILE* const file = std::fopen(text, "re")) {
        (void)!std::fgets(name, sizeof name, file);
        std::fclose(file);
    }
    name[strcspn(name, "\n")] = '\0';
    snprintf(text, sizeof text, "process %d (%s)", holder, name);
    report("cannot bind SAP %u: %s has locked the directory %s", endpoint.handle.sap_id,
           name[0] != '\0' ? text : "another process", endpoint.directory);
}

// Binding locks the directory for a moment. A process that was stopped just then keeps the lock.
bool lock(int directory, const Endpoint& endpoint)
{
    constexpr timespec moment{0, 2'000'000};
    const Deadline deadline(endpoint.timeout);
    while (flock(directory, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            report("cannot bind SAP %u: cannot lock the directory %s: %s", endpoint.handle.sap_id, endpoint.directory,
                   strerror(errno));
            return false;
        }
        if (deadline.remaining() <= 0) {
            report_locked(directory, endpoint);
            return false;
        }
        nanosleep(&moment, nullptr);
    }
    return true;
}

// What a socket's file leads to.
enum class Service { there, none, unknown };

Service service_at(const sockaddr_un& address)
{
    const Descriptor probe(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!probe) {
        return Service::unknown;
    }
    const auto* const target = reinterpret_cast<const sockaddr*>(&address);
    const bool connected = connect(probe.get(), target, sizeof address) == 0;
    return !connected && (errno == ECONNREFUSED || errno == ENOENT) ? Service::none : Service::there;
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
    const Service found = service_at(address);
    if (found == Service::unknown) {
        report("cannot bind SAP %u: %s", sap, strerror(errno));
    } else if (found == Service::there) {
        report("cannot bind SAP %u: it is in use (%s)", sap, address.sun_path);
    }
    return found == Service::none && unlink(address.sun_path) == 0;
}

// A child that another thread forks meanwhile inherits the descriptor: closing this one would not unlock.
struct Unlock {
    const int directory;
    ~Unlock()
    {
        const int cause = errno;
        flock(directory, LOCK_UN);
        errno = cause;
    }
};

// What is to be bound: the first free SAP of some.
struct BindRequest {
    const char* directory; // null: the environment's
    vor_uint16 first;
    vor_uint16 last;
    vor_uint16 bind_option;
};

// The lock on the directory keeps two processes from replacing one dead owner.
bool bind_socket(Endpoint& endpoint, const BindRequest& request)
{
    const Descriptor directory(open_directory(endpoint.directory, request.directory));
    if (!directory || !lock(directory.get(), endpoint)) {
        return false;
    }
    const Unlock unlock{directory.get()};
    vor_uint16& sap = endpoint.handle.sap_id;
    sockaddr_un address = sap_address(endpoint.directory, sap);
    while (sap < request.last && service_at(address) == Service::there) {
        address = sap_address(endpoint.directory, ++sap);
    }
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

bool open_endpoint(Endpoint& endpoint, const BindRequest& request)
{
    const auto timeout = timeout_milliseconds();
    if (!timeout || !log_levels() || !timers_run()) {
        return false;
    }
    Descriptor descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    endpoint.owner = Owner::create();
    if (endpoint.owner == nullptr || !descriptor || !limit_blocking(descriptor.get(), SO_RCVTIMEO, *timeout) ||
        !limit_blocking(descriptor.get(), SO_SNDTIMEO, *timeout)) {
        report("cannot bind SAP %u: %s", request.first, strerror(errno));
        return false;
    }
    endpoint.handle = {request.first, request.bind_option, &endpoint};
    endpoint.descriptor = descriptor.get();
    endpoint.timeout = *timeout;
    endpoint.binder = pthread_self();
    endpoint.sequence = random_sequence();
    if (!bind_socket(endpoint, request)) {
        return false;
    }
    descriptor.release();
    return true;
}

void discard(Endpoint* endpoint)
{
    Owner::forget(endpoint->owner);
    free(endpoint);
}

VOR_IPC_HANDLE* bind_first(const BindRequest& request)
{
    auto* const endpoint = static_cast<Endpoint*>(calloc(1, sizeof(Endpoint)));
    if (endpoint == nullptr) {
        return nullptr;
    }
    if (!open_endpoint(*endpoint, request)) {
        discard(endpoint);
        return nullptr;
    }
    const Lock lock(guard);
    endpoint->next = endpoints;
    endpoints = endpoint;
    return &endpoint->handle;
}

} // namespace

} // namespace vorinfra

using namespace vorinfra;

VOR_IPC_HANDLE* vor_ipc_bind(vor_uint16 sap, vor_uint16 bind_option)
{
    return bind_first({nullptr, sap, sap, bind_option});
}

VOR_IPC_HANDLE* vorinfra_bind_in(const char* directory, vor_uint16 first, vor_uint16 last)
{
    return bind_first({directory, first, last, 0});
}

// 1: unbound; 0: it was not bound, or another thread uses it. The socket's file is its owner's.
vor_bool vor_ipc_unbind(VOR_IPC_HANDLE* handle)
{
    if (handle == nullptr) {
        return 0;
    }
    Use use(handle, "vor_ipc_unbind");
    Endpoint* const endpoint = use.release();
    if (endpoint == nullptr) {
        return 0;
    }
    {
        const Lock lock(guard);
        *link_to(handle) = endpoint->next;
    }
    take_back_buffers(endpoint);
    if ((!endpoint->inherited || endpoint->owner->take_over(0)) && has_socket_file(*endpoint)) {
        unlink(sap_address(endpoint->directory, handle->sap_id).sun_path);
    }
    close(endpoint->descriptor);
    discard(endpoint);
    return 1;
}

int vorinfra_descriptor(const VOR_IPC_HANDLE* handle)
{
    const Endpoint* const endpoint = handle != nullptr ? bound_endpoint(handle, "vorinfra_descriptor") : nullptr;
    return endpoint != nullptr ? endpoint->descriptor : -1;
}

int vorinfra_timeout(const VOR_IPC_HANDLE* handle)
{
    const Endpoint* const endpoint = bound_endpoint(handle, "vorinfra_timeout");
    return endpoint != nullptr ? endpoint->timeout : -1;
}

int vorinfra_is_served(const VOR_IPC_HANDLE* handle, vor_uint16 sap)
{
    const Endpoint* const endpoint = bound_endpoint(handle, "vorinfra_is_served");
    return endpoint != nullptr && service_at(sap_address(endpoint->directory, sap)) != Service::none;
}
