#include "message.hpp"

#include <array>
#include <atomic>
#include <cerrno>
#include <sys/socket.h>
#include <sys/uio.h>

#include "log.hpp"

namespace vorinfra {

namespace {

std::array<std::atomic<unsigned char>, 0x10000> traced; // by SAP; any thread may switch

void trace(const char* what, const VOR_IPC_MSG_HDR& header)
{
    if (traced[header.ipc_src_id] != 0 || traced[header.ipc_dest_id] != 0) {
        const bool answer = (header.flag & answer_bit) != 0;
        log_line(log_messages, "%s: SAP %u to %u, id 0x%x, %s %u, meta-data %u, payload %u", what, header.ipc_src_id,
                 header.ipc_dest_id, static_cast<unsigned>(header.opcode), answer ? "answer" : "request",
                 static_cast<unsigned>(header.flag & sequence_bits), header.meta_data_sz, header.payload_sz);
    }
}

} // namespace

void toggle_trace(vor_uint16 sap)
{
    traced[sap] ^= 1;
}

namespace {

size_t data_size(const VOR_IPC_MSG_HDR& header)
{
    return static_cast<size_t>(header.meta_data_sz) + header.payload_sz;
}

// After a signal, each attempt has only the time that is left.
ssize_t send_again(int descriptor, const msghdr& message, int flags, const Deadline& deadline)
{
    ssize_t sent = -1;
    for (int left; sent < 0 && errno == EINTR && (left = deadline.remaining()) > 0;) {
        limit_blocking(descriptor, SO_SNDTIMEO, left);
        sent = sendmsg(descriptor, &message, flags);
    }
    return sent;
}

} // namespace

bool send_message(const Endpoint& endpoint, const VOR_IPC_MSG_HDR& header, const void* data, int flags)
{
    sockaddr_un to = sap_address(endpoint.directory, header.ipc_dest_id);
    iovec parts[] = {{const_cast<VOR_IPC_MSG_HDR*>(&header), sizeof header},
                     {const_cast<void*>(data), data_size(header)}};
    msghdr message{};
    message.msg_name = &to;
    message.msg_namelen = sizeof to;
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    const Deadline deadline(endpoint.timeout);
    ssize_t sent = sendmsg(endpoint.descriptor, &message, flags | MSG_NOSIGNAL);
    int cause = errno;
    if (sent < 0 && cause == EINTR) {
        sent = send_again(endpoint.descriptor, message, flags | MSG_NOSIGNAL, deadline);
        cause = errno;
        limit_blocking(endpoint.descriptor, SO_SNDTIMEO, endpoint.timeout);
    }
    trace(sent < 0 ? "not delivered" : "sent", header);
    errno = cause;
    return sent >= 0;
}

Received receive_message(const Endpoint& endpoint, VOR_IPC_MSG_HDR& header, void* data, int flags)
{
    iovec parts[] = {{&header, sizeof header}, {data, VORINFRA_DATA_MAX}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    const ssize_t size = recvmsg(endpoint.descriptor, &message, flags);
    if (size < 0) {
        return Received::nothing;
    }
    if (static_cast<size_t>(size) < sizeof header || (message.msg_flags & MSG_TRUNC) != 0 ||
        static_cast<size_t>(size) != sizeof header + data_size(header)) {
        report("SAP %u: %zd bytes dropped, not a message", endpoint.handle.sap_id, size);
        return Received::garbage;
    }
    trace("received", header);
    return Received::message;
}

} // namespace vorinfra
