// endpoint.hpp: a SAP that this process is bound to.
#pragma once

#include <sys/types.h>

#include "directory.hpp"
#include "system.hpp"

namespace vorinfra {

struct Endpoint {
    VOR_IPC_HANDLE handle; // given to the caller
    Endpoint* next;
    int descriptor;
    int timeout;         // milliseconds
    pthread_t binder;    // the thread that bound it
    vor_uint16 sequence; // of the last request
    bool answer_missing; // of an earlier request; it may still come
    dev_t device;        // with the inode: the socket's file, which
    ino_t inode;         // someone may have replaced meanwhile
    char directory[socket_path_size];
};

// The endpoint of a handle; null if there is none, with a report that names the operation.
Endpoint* bound_endpoint(const VOR_IPC_HANDLE* handle, const char* operation);

// The newest endpoint of the calling thread, else the newest of all; null if none is bound.
const Endpoint* newest_endpoint();

} // namespace vorinfra
