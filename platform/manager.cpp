// The manager's side: receive, answer, pass on.
#include <cerrno>
#include <cstring>

#include "log.hpp"
#include "message.hpp"

using namespace vorinfra;

namespace {

enum class Expected { request, answer };

int receive(VOR_IPC_HANDLE* handle, VORINFRA_MESSAGE* message, int flags, const char* operation,
            Expected expected = Expected::request)
{
    Endpoint* const endpoint = bound_endpoint(handle, operation);
    if (endpoint == nullptr || !is_ours(*endpoint, operation)) {
        return -1;
    }
    const Deadline deadline(endpoint->timeout);
    VOR_IPC_MSG_HDR header;
    Received received;
    do {
        received = receive_message(*endpoint, header, message->data, flags);
        flags = MSG_DONTWAIT;
    } while (received == Received::nothing && errno == EINTR && deadline.wait(endpoint->descriptor, POLLIN));
    if (received != Received::message) {
        return received == Received::nothing ? 0 : -1;
    }
    const bool is_answer = (header.flag & answer_bit) != 0;
    if (is_answer != (expected == Expected::answer)) {
        report("SAP %u: unexpected %s from SAP %u dropped", endpoint->handle.sap_id, is_answer ? "answer" : "message",
               header.ipc_src_id);
        return -1;
    }
    message->source = header.ipc_src_id;
    message->destination = header.ipc_dest_id;
    message->id = header.opcode;
    message->sequence = header.flag & sequence_bits;
    message->answer_wanted = !is_answer && header.flag != 0;
    message->meta_data = message->data;
    message->meta_data_size = header.meta_data_sz;
    message->payload = message->data + header.meta_data_sz;
    message->payload_size = header.payload_sz;
    return is_answer && is_refusal(header, message->data) ? 2 : 1;
}

VOR_IPC_MSG_HDR answer_header(const Endpoint& endpoint, const VORINFRA_MESSAGE& request, vor_uint32 id)
{
    VOR_IPC_MSG_HDR header;
    memset(&header, 0, sizeof header); // its padding is sent, too
    header.ipc_src_id = endpoint.handle.sap_id;
    header.ipc_dest_id = request.source;
    header.opcode = id;
    header.flag = static_cast<vor_uint16>(answer_bit | request.sequence);
    return header;
}

} // namespace

int vorinfra_receive(VOR_IPC_HANDLE* handle, VORINFRA_MESSAGE* message)
{
    return receive(handle, message, MSG_DONTWAIT, "vorinfra_receive");
}

int vorinfra_await(VOR_IPC_HANDLE* handle, VORINFRA_MESSAGE* message)
{
    return receive(handle, message, 0, "vorinfra_await");
}

int vorinfra_answer(VOR_IPC_HANDLE* handle, const VORINFRA_MESSAGE* request, vor_uint32 id, const void* payload,
                    vor_uint16 size)
{
    const Endpoint* const endpoint = bound_endpoint(handle, "vorinfra_answer");
    if (endpoint == nullptr) {
        return -1;
    }
    const vor_uint16 own_sap = endpoint->handle.sap_id;
    if (!request->answer_wanted) {
        report("SAP %u: message 0x%x from SAP %u is one-way and cannot be answered", own_sap,
               static_cast<unsigned>(request->id), request->source);
        return -1;
    }
    if (size > VORINFRA_DATA_MAX || (payload == nullptr && size > 0)) {
        report("SAP %u: cannot send an answer of %u bytes: %s", own_sap, size,
               payload == nullptr ? "null pointer" : "at most 4096");
        return -1;
    }
    VOR_IPC_MSG_HDR header = answer_header(*endpoint, *request, id);
    header.payload_sz = size;
    return send_message(*endpoint, header, payload, MSG_DONTWAIT) ? 0 : -1;
}

int vorinfra_refuse(VOR_IPC_HANDLE* handle, const VORINFRA_MESSAGE* request)
{
    const Endpoint* const endpoint = bound_endpoint(handle, "vorinfra_refuse");
    if (endpoint == nullptr || !request->answer_wanted) {
        return -1;
    }
    VOR_IPC_MSG_HDR header = answer_header(*endpoint, *request, request->id);
    header.meta_data_sz = refusal_size;
    return send_message(*endpoint, header, refusal, MSG_DONTWAIT) ? 0 : -1;
}

int vorinfra_forward(VOR_IPC_HANDLE* handle, const VORINFRA_MESSAGE* message, vor_uint16 sequence)
{
    const Endpoint* const endpoint = bound_endpoint(handle, "vorinfra_forward");
    if (endpoint == nullptr) {
        errno = EBADF;
        return -1;
    }
    VOR_IPC_MSG_HDR header;
    memset(&header, 0, sizeof header); // its padding is sent, too
    header.ipc_src_id = endpoint->handle.sap_id;
    header.ipc_dest_id = message->destination;
    header.opcode = message->id;
    header.flag = sequence & sequence_bits;
    header.payload_sz = message->payload_size;
    header.meta_data_sz = message->meta_data_size;
    return send_message(*endpoint, header, message->data, MSG_DONTWAIT) ? 0 : -1;
}

int vorinfra_receive_answer(VOR_IPC_HANDLE* handle, VORINFRA_MESSAGE* message)
{
    return receive(handle, message, MSG_DONTWAIT, "vorinfra_receive_answer", Expected::answer);
}
