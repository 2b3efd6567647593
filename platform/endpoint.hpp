// endpoint.hpp: a SAP that this process is bound to.
#pragma once

#include <sys/types.h>

#include "directory.hpp"
#include "system.hpp"

namespace vorinfra {

struct Endpoint {
    VOR_IPC_HANDLE handle; // what the caller holds
    Endpoint* next;
    int descriptor;
    int timeout;         // milliseconds
    pthread_t binder;    // the thread whose endpoint it is
    vor_uint16 sequence; // of the last request
    bool answer_missing; // of an earlier request; it may still come
    dev_t device;        // with the inode: the socket's file, which
    ino_t inode;         // someone may have replaced meanwhile
    char directory[socket_path_size];
};

// The endpoint behind a handle; null, with a complaint that names the
// operation, when there is none.
Endpoint* bound_endpoint(const VOR_IPC_HANDLE* handle, const char* operation);

// The newest that the calling thread has bound; else the newest of all. Null: none is bound.
const Endpoint* newest_endpoint();

} // namespace vorinfra
