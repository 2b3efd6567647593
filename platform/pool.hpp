// pool.hpp: the message buffers.
#pragma once

#include <atomic>
#include <cstddef>

#include "vorinfra_manager.h"

namespace vorinfra {

struct Endpoint;

// The alignment of a record's 64-bit numbers.
constexpr size_t record_alignment = 8;

struct alignas(record_alignment) Buffer {
    // Bytes of a status or record that the manager did not send must not look sent.
    static constexpr size_t margin = 64;

    VOR_IPC_MSG_HDR header; // the message begins here
    vor_uchar data[VORINFRA_DATA_MAX];
    vor_uchar behind[record_alignment + margin]; // of an answer

    std::atomic<const Endpoint*> holder; // unbinding it frees the buffer; read by any thread
    Buffer* next_free;
    bool touched; // taken before
    bool taken;
    bool answer;     // filled by an exchange, not by its taker
    bool unsendable; // a chain meant for it was refused

    // An answer's payload, on a boundary whatever the size of its meta-data.
    vor_uchar* answer_payload(vor_uint16 meta_data_size)
    {
        return data + (meta_data_size + record_alignment - 1) / record_alignment * record_alignment;
    }

    size_t room_behind(const void* address) const
    {
        return static_cast<size_t>(data + sizeof data - static_cast<const vor_uchar*>(address));
    }
};

// The buffer whose data area holds the address, or null.
Buffer* find_buffer(const void* address);

// The buffer of a reference; null if there is none or it was released, with a report that names the operation.
Buffer* referenced_buffer(const VOR_IPC_MSG_REF* message, const char* operation);

// Moves the payload of a received answer to where callers read it, with no status after its end.
void settle_answer(Buffer& buffer);

// False, with a report: no memory for another.
bool take_buffer(const Endpoint* holder, VOR_IPC_MSG_REF& message);
void take_back_buffers(const Endpoint* holder);

} // namespace vorinfra
