// The exchange, as the configuration library makes it.
#include <atomic>
#include <cerrno>
#include <cstring>

#include "log.hpp"
#include "message.hpp"
#include "pool.hpp"
#include "vorinfra_inspect.h"

namespace vorinfra {

namespace {

std::atomic<unsigned> undelivered;

bool send_buffer(Endpoint& endpoint, VOR_IPC_MSG_REF& message, Buffer& buffer, vor_uint16 sap, vor_uint32 message_id,
                 vor_uint16 sequence, vor_uint16 payload_length)
{
    buffer.holder.store(&endpoint, std::memory_order_relaxed);
    if (buffer.unsendable) {
        report("message 0x%x to SAP %u not sent: its chain was refused", static_cast<unsigned>(message_id), sap);
        errno = EMSGSIZE;
        return false;
    }
    if (message.meta_data_sz + payload_length > VORINFRA_DATA_MAX) {
        report("message 0x%x to SAP %u not sent: %d bytes, at most %d", static_cast<unsigned>(message_id), sap,
               message.meta_data_sz + payload_length, VORINFRA_DATA_MAX);
        errno = EMSGSIZE;
        return false;
    }
    message.payload_sz = payload_length;
    buffer.header = {endpoint.handle.sap_id, sap, message_id, sequence, payload_length, message.meta_data_sz};
    return send_message(endpoint, buffer.header, buffer.data, 0);
}

// A late answer, whose caller has given up, would take the room of the next one.
void discard_late(Endpoint& endpoint)
{
    const Deadline deadline(endpoint.timeout);
    char byte;
    while (recv(endpoint.descriptor, &byte, sizeof byte, MSG_DONTWAIT) >= 0 && deadline.remaining() > 0) {}
    endpoint.answer_missing = false;
}

enum class Awaited { answered, refused, nothing };

Awaited await_answer(Endpoint& endpoint, vor_uint16 sap, Buffer& buffer)
{
    const Deadline deadline(endpoint.timeout);
    int flags = 0; // the first receive blocks within the socket's own limit
    do {
        const Received received = receive_message(endpoint, buffer.header, buffer.data, flags);
        if (received == Received::message && buffer.header.flag == (answer_bit | endpoint.sequence) &&
            buffer.header.ipc_src_id == sap) {
            settle_answer(buffer);
            return is_refusal(buffer.header, buffer.data) ? Awaited::refused : Awaited::answered;
        }
        if (received == Received::nothing && errno != EAGAIN && errno != EINTR) {
            report("SAP %u cannot receive: error %d", endpoint.handle.sap_id, errno);
            return Awaited::nothing;
        }
        flags = MSG_DONTWAIT;
    } while (deadline.wait(endpoint.descriptor, POLLIN) && deadline.remaining() > 0);
    errno = ETIMEDOUT;
    return Awaited::nothing;
}

vor_uint16 next_sequence(vor_uint16 sequence)
{
    const unsigned next = (sequence + 1U) & sequence_bits;
    return static_cast<vor_uint16>(next != 0 ? next : 1);
}

} // namespace

} // namespace vorinfra

using namespace vorinfra;

vor_int32 vor_ipc_get_buffer(VOR_IPC_MSG_REF* message)
{
    return message != nullptr && take_buffer(newest_endpoint(), *message) ? 0 : -1;
}

vor_int32 vor_ipc_request_response(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id,
                                   VOR_IPC_MSG_REF* request, VOR_IPC_MSG_REF* response, vor_uint16 payload_length,
                                   vor_uint16)
{
    constexpr char name[] = "vor_ipc_request_response";
    const Use use(handle, name);
    Endpoint* const endpoint = use.get();
    Buffer* const sent = endpoint != nullptr && is_ours(*endpoint, name) ? referenced_buffer(request, name) : nullptr;
    Buffer* const answer = sent != nullptr ? referenced_buffer(response, name) : nullptr;
    if (answer == nullptr) {
        return VORINFRA_NOT_SENT;
    }
    answer->holder.store(endpoint, std::memory_order_relaxed);
    answer->answer = true;
    response->meta_data_sz = 0;
    response->payload_sz = 0;
    if (endpoint->answer_missing) {
        discard_late(*endpoint);
    }
    endpoint->sequence = next_sequence(endpoint->sequence);
    if (!send_buffer(*endpoint, *request, *sent, sap, message_id, endpoint->sequence, payload_length)) {
        return VORINFRA_NOT_SENT;
    }
    endpoint->answer_missing = true; // also if the thread ends while it waits
    const Awaited awaited = await_answer(*endpoint, sap, *answer);
    endpoint->answer_missing = awaited == Awaited::nothing;
    switch (awaited) {
    case Awaited::nothing:
        return VORINFRA_NO_ANSWER;
    case Awaited::refused:
        errno = ECONNREFUSED;
        return VORINFRA_NOT_SENT;
    default:
        break;
    }
    response->meta_data_sz = answer->header.meta_data_sz;
    response->payload_sz = answer->header.payload_sz;
    return 0;
}

vor_int32 vor_ipc_send(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id, VOR_IPC_MSG_REF* message,
                       vor_uint16 payload_length, vor_uint16)
{
    constexpr char name[] = "vor_ipc_send";
    const Use use(handle, name);
    Endpoint* const endpoint = use.get();
    Buffer* const buffer = endpoint != nullptr && is_ours(*endpoint, name) ? referenced_buffer(message, name) : nullptr;
    if (buffer == nullptr) {
        return VORINFRA_NOT_SENT;
    }
    if (!send_buffer(*endpoint, *message, *buffer, sap, message_id, 0, payload_length)) {
        const bool unserved = errno == ENOENT || errno == ECONNREFUSED; // no socket, or its owner died
        if (!unserved) {
            return VORINFRA_NOT_SENT;
        }
        undelivered++;
    }
    return 0;
}

unsigned vorinfra_messages_undelivered(void)
{
    return undelivered;
}

// Switches the trace of a SAP's messages on, and off again.
vor_int32 vor_ipc_debug(VOR_IPC_HANDLE* handle, vor_uint16 module_number)
{
    if (bound_endpoint(handle, "vor_ipc_debug") == nullptr) {
        return -1;
    }
    toggle_trace(module_number);
    return 0;
}
