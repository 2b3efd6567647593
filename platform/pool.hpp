// pool.hpp: the message buffers.
#pragma once

#include <cstddef>

#include "vorinfra_manager.h"

namespace vorinfra {

struct Endpoint;

struct Buffer {
    VOR_IPC_MSG_HDR header; // the message begins here
    vor_uchar data[VORINFRA_DATA_MAX];

    const Endpoint* holder; // whose unbinding takes it back
    Buffer* next_free;
    bool touched; // taken before
    bool taken;
    bool answer;     // filled by an exchange, not by its taker
    bool unsendable; // a chain meant for it was refused

    size_t room_behind(const void* address) const
    {
        return static_cast<size_t>(data + sizeof data - static_cast<const vor_uchar*>(address));
    }
};

// The buffer whose data area holds the address; null: none does.
Buffer* find_buffer(const void* address);

// The buffer behind a reference; null, with a complaint that names the
// operation, when there is none or it was given back.
Buffer* referenced_buffer(const VOR_IPC_MSG_REF* message, const char* operation);

void take_back_buffers(const Endpoint* holder);

} // namespace vorinfra
