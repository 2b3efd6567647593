/*
 * The pool of message buffers. It grows in blocks, each twice the one before,
 * and never shrinks: a record that a caller still reads after handing it back
 * stays readable, and the longest possible, because the buffer that has been
 * free for the longest time is taken first.
 */
#include "pool.hpp"

#include <cstdlib>
#include <cstring>

#include "log.hpp"
#include "system.hpp"
#include "vorinfra_inspect.h"

namespace vorinfra {

namespace {

static_assert(sizeof(VOR_IPC_MSG_HDR) == 16 && offsetof(Buffer, data) == 16);

constexpr unsigned first_block = 16;
constexpr unsigned most_blocks = 16;
constexpr vor_uchar first_use_pattern = 0xa5; // makes bytes visible that a caller sends without setting them
constexpr vor_uchar not_sent_pattern = 0xa5;  // never looks like a status, however many of its bytes were sent
constexpr unsigned many = 64;                 // taken at once; a call holds two

pthread_mutex_t guard = PTHREAD_MUTEX_INITIALIZER;
[[maybe_unused]] const int at_fork = pthread_atfork(
    [] { pthread_mutex_lock(&guard); }, [] { pthread_mutex_unlock(&guard); }, [] { pthread_mutex_unlock(&guard); });
Buffer* blocks[most_blocks];
unsigned block_count;
unsigned taken_count;
Buffer* free_first;
Buffer** free_end = &free_first;

unsigned block_size(unsigned block)
{
    return first_block << block;
}

void append_free(Buffer* buffer)
{
    buffer->next_free = nullptr;
    *free_end = buffer;
    free_end = &buffer->next_free;
}

void grow()
{
    if (block_count == most_blocks) {
        return;
    }
    const unsigned count = block_size(block_count);
    Buffer* const block = static_cast<Buffer*>(calloc(count, sizeof(Buffer)));
    if (block == nullptr) {
        return;
    }
    blocks[block_count++] = block;
    for (unsigned i = 0; i < count; i++) {
        append_free(&block[i]);
    }
}

Buffer* containing(const void* address)
{
    const auto sought = reinterpret_cast<uintptr_t>(address);
    for (unsigned i = 0; i < block_count; i++) {
        const auto start = reinterpret_cast<uintptr_t>(blocks[i]);
        if (sought >= start && sought < start + block_size(i) * sizeof(Buffer)) {
            return &blocks[i][(sought - start) / sizeof(Buffer)];
        }
    }
    return nullptr;
}

Buffer* taken(const VOR_IPC_MSG_REF* message)
{
    if (message == nullptr || message->data_ptr == nullptr) {
        return nullptr;
    }
    Buffer* const buffer = containing(message->data_ptr);
    return buffer != nullptr && buffer->taken && message->data_ptr == &buffer->header ? buffer : nullptr;
}

void give_back(Buffer* buffer)
{
    buffer->taken = false;
    taken_count--;
    append_free(buffer);
}

} // namespace

void settle_answer(Buffer& buffer)
{
    vor_uchar* const payload = buffer.answer_payload(buffer.header.meta_data_sz);
    memmove(payload, buffer.data + buffer.header.meta_data_sz, buffer.header.payload_sz);
    memset(payload + buffer.header.payload_sz, not_sent_pattern, Buffer::margin);
}

Buffer* find_buffer(const void* address)
{
    const Lock lock(guard);
    Buffer* const buffer = containing(address);
    const bool in_data = buffer != nullptr && address >= buffer->data && address < buffer->data + sizeof buffer->data;
    return in_data ? buffer : nullptr;
}

Buffer* referenced_buffer(const VOR_IPC_MSG_REF* message, const char* operation)
{
    Buffer* buffer;
    {
        const Lock lock(guard);
        buffer = taken(message);
    }
    if (buffer == nullptr) {
        report("%s: the reference has no message buffer", operation);
    }
    return buffer;
}

void take_back_buffers(const Endpoint* holder)
{
    const Lock lock(guard);
    for (unsigned i = 0; i < block_count; i++) {
        for (Buffer* buffer = blocks[i]; buffer != blocks[i] + block_size(i); buffer++) {
            if (buffer->taken && buffer->holder.load(std::memory_order_relaxed) == holder) {
                give_back(buffer);
            }
        }
    }
}

bool take_buffer(const Endpoint* holder, VOR_IPC_MSG_REF& message)
{
    message = {};
    const Lock lock(guard);
    if (free_first == nullptr) {
        grow();
    }
    Buffer* const buffer = free_first;
    if (buffer == nullptr) {
        report("no message buffer: %u in use, and no memory for more", taken_count);
        return false;
    }
    free_first = buffer->next_free;
    if (free_first == nullptr) {
        free_end = &free_first;
    }
    if (!buffer->touched) {
        memset(static_cast<void*>(&buffer->header), first_use_pattern, sizeof buffer->header);
        memset(buffer->data, first_use_pattern, sizeof buffer->data);
        buffer->touched = true;
    }
    buffer->holder.store(holder, std::memory_order_relaxed);
    buffer->taken = true;
    buffer->answer = false;
    buffer->unsendable = false;
    if (++taken_count == many) {
        report("%u message buffers are taken: some calls keep theirs by design until the endpoint is unbound",
               taken_count);
    }
    message = {&buffer->header, sizeof buffer->header + sizeof buffer->data, 0, 0};
    return true;
}

} // namespace vorinfra

using namespace vorinfra;

void vor_ipc_drop_msg_buf(VOR_IPC_MSG_REF* message)
{
    if (Buffer* const buffer = referenced_buffer(message, "vor_ipc_drop_msg_buf")) {
        const Lock lock(guard);
        give_back(buffer);
        message->data_ptr = nullptr; // a second drop must not free it for its next user
    }
}

// Asking for the byte makes it part of a request; an answer has it or not.
void* vor_ipc_get_meta_data_ptr(VOR_IPC_MSG_REF* message)
{
    Buffer* const buffer = referenced_buffer(message, "vor_ipc_get_meta_data_ptr");
    if (buffer == nullptr || (buffer->answer && message->meta_data_sz == 0)) {
        return nullptr;
    }
    if (!buffer->answer) {
        message->meta_data_sz = 1;
    }
    return buffer->data;
}

// A request may be written anywhere in its data area; an answer has only the bytes that the manager sent.
void* vor_ipc_get_payload_ptr(VOR_IPC_MSG_REF* message, vor_uint16 offset)
{
    Buffer* const buffer = referenced_buffer(message, "vor_ipc_get_payload_ptr");
    if (buffer == nullptr || offset >= (buffer->answer ? message->payload_sz : sizeof buffer->data)) {
        return nullptr;
    }
    return (buffer->answer ? buffer->answer_payload(message->meta_data_sz) : buffer->data) + offset;
}

unsigned vorinfra_buffers_taken(void)
{
    const Lock lock(guard);
    return taken_count;
}
