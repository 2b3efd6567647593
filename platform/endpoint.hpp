// endpoint.hpp: a SAP that this process is bound to.
#pragma once

#include <atomic>
#include <sys/types.h>
#include <utility>

#include "directory.hpp"
#include "owner.hpp"
#include "system.hpp"

namespace vorinfra {

struct Endpoint {
    VOR_IPC_HANDLE handle; // given to the caller
    Endpoint* next;
    int descriptor;
    int timeout;             // milliseconds
    pthread_t binder;        // the thread that bound it
    std::atomic<pid_t> user; // the thread whose operation it serves; 0: none
    vor_uint16 sequence;     // of the last request
    bool answer_missing;     // of an earlier request; it may still come
    bool inherited;          // from a process that owned it, and may do so still
    bool awaited;            // that process was given time to end
    Owner* owner;
    dev_t device; // with the inode: the socket's file, which
    ino_t inode;  // someone may have replaced meanwhile
    char directory[socket_path_size];
};

// The endpoint of a handle; null if there is none, with a report that names the operation.
Endpoint* bound_endpoint(const VOR_IPC_HANDLE* handle, const char* operation);

// Whether this process may send and receive there: a process that inherited the endpoint may once its owner has ended.
// False with errno EBUSY and a report that names the operation.
bool is_ours(Endpoint& endpoint, const char* operation);

// The bound endpoint of a handle, for this thread alone as long as this exists; null with a report if there is none, or
// with errno EBUSY if another thread has it.
class Use {
public:
    Use(const VOR_IPC_HANDLE* handle, const char* operation);
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use()
    {
        if (endpoint_ != nullptr) {
            endpoint_->user.store(0, std::memory_order_release);
        }
    }
    Endpoint* get() const { return endpoint_; }
    Endpoint* release() // to free it
    {
        return std::exchange(endpoint_, nullptr);
    }

private:
    Endpoint* endpoint_;
};

// The newest endpoint of the calling thread, else the newest of all; null if none is bound.
const Endpoint* newest_endpoint();

} // namespace vorinfra
