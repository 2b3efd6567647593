// The platform's operations as the library finds them: each taken down, and
// passed on or captured.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "call/boundary.hpp"
#include "text/text.hpp"

using namespace vorcfg;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t header_size = sizeof(VOR_IPC_MSG_HDR);

// A platform that refuses does so at once; who waited before giving up does
// not know what became of the message.
bool waited(Clock::time_point start)
{
    return errno == ETIMEDOUT || Clock::now() - start >= std::chrono::seconds(1);
}

void note_connecting(bool done)
{
    if (boundary().watching() && !done) {
        boundary().watch->seen.unconnected = true;
    }
}

// The one-way messages that nobody received. Only the development platform
// counts them; of another platform's none is known to be lost.
unsigned messages_undelivered()
{
    static auto* const operation =
        reinterpret_cast<unsigned (*)()>(dlsym(RTLD_DEFAULT, "vorinfra_messages_undelivered"));
    return operation != nullptr ? operation() : 0;
}

vor_int32 accept_captured(vor_uint32 id, VOR_IPC_MSG_REF* response)
{
    VOR_IPC_MSG_HDR header{};
    header.opcode = id;
    std::memcpy(response->data_ptr, &header, sizeof header);
    return 0;
}

// The form on the wire is the platform's, and so is its size; it needs no more
// room than this.
vor_int32 serialize_captured(TLV_CHAIN* chain, vor_int32* size)
{
    static constexpr std::size_t most_around_an_element = 64;
    std::size_t room = most_around_an_element;
    for (const Element& element : boundary().chain.elements) {
        room += element.bytes.size() + most_around_an_element;
    }
    std::vector<vor_uchar> scratch(room);
    *size = 0;
    const vor_int32 result = pass<vor_tlv_chain_serialize>(chain, scratch.data(), size);
    boundary().chain.size = *size > 0 ? static_cast<std::size_t>(*size) : 0;
    boundary().chain.refused = boundary().chain.refused || result != 0;
    return result;
}

template <auto Operation, class... Arguments>
vor_int32 add(TLV_CHAIN* chain, Element element, Arguments... arguments)
{
    boundary().add(chain, std::move(element));
    const vor_int32 result = pass<Operation>(chain, arguments...);
    boundary().chain.refused = boundary().chain.refused || (boundary().captures() && result != 0);
    return result;
}

} // namespace

vor_int32 vor_tlv_chain_init(TLV_CHAIN* chain)
{
    if (boundary().watching()) {
        boundary().chain = {};
        boundary().chain.chain = chain;
    }
    return pass<vor_tlv_chain_init>(chain);
}

vor_int32 vor_tlv_chain_add_str(TLV_CHAIN* chain, vor_uint16 tag, char* string)
{
    Element element{tag, Element::Kind::text, 0, string != nullptr ? string : "", boundary().is_secret(string)};
    return add<vor_tlv_chain_add_str>(chain, std::move(element), tag, string);
}

vor_int32 vor_tlv_chain_add_vor_int16(TLV_CHAIN* chain, vor_uint16 tag, vor_int16 value)
{
    return add<vor_tlv_chain_add_vor_int16>(chain, {tag, Element::Kind::int16, value, {}, false}, tag, value);
}

vor_int32 vor_tlv_chain_add_vor_int32(TLV_CHAIN* chain, vor_uint16 tag, vor_int32 value)
{
    return add<vor_tlv_chain_add_vor_int32>(chain, {tag, Element::Kind::int32, value, {}, false}, tag, value);
}

vor_int32 vor_tlv_chain_add_raw(TLV_CHAIN* chain, vor_uint16 tag, vor_uint16 length, unsigned char* bytes)
{
    Element element{tag, Element::Kind::raw, 0, std::string(reinterpret_cast<char*>(bytes), length), false};
    return add<vor_tlv_chain_add_raw>(chain, std::move(element), tag, length, bytes);
}

vor_int32 vor_tlv_chain_serialize(TLV_CHAIN* chain, unsigned char* destination, vor_int32* size)
{
    if (boundary().watching() && chain == boundary().chain.chain) {
        boundary().chain.destination = destination;
    }
    return boundary().captures() ? serialize_captured(chain, size)
                                 : pass<vor_tlv_chain_serialize>(chain, destination, size);
}

vor_int32 vor_tlv_chain_free(TLV_CHAIN* chain, vor_uchar flag)
{
    return pass<vor_tlv_chain_free>(chain, flag);
}

vor_int32 vor_ipc_get_buffer(VOR_IPC_MSG_REF* message)
{
    if (!boundary().captures()) {
        return pass<vor_ipc_get_buffer>(message);
    }
    auto& buffers = boundary().captured.buffers;
    *message = {buffers.emplace_back(std::make_unique<Captured::Buffer>())->data(), sizeof(Captured::Buffer), 0, 0};
    return 0;
}

void* vor_ipc_get_meta_data_ptr(VOR_IPC_MSG_REF* message)
{
    void* const found = boundary().captures() ? static_cast<vor_uchar*>(message->data_ptr) + header_size
                                              : pass<vor_ipc_get_meta_data_ptr>(message);
    if (boundary().watching()) {
        boundary().unsent_of(message).meta_data = static_cast<vor_uchar*>(found);
    }
    return found;
}

void* vor_ipc_get_payload_ptr(VOR_IPC_MSG_REF* message, vor_uint16 offset)
{
    void* const found = boundary().captures() ? static_cast<vor_uchar*>(message->data_ptr) + header_size + offset
                                              : pass<vor_ipc_get_payload_ptr>(message, offset);
    if (boundary().watching()) {
        Unsent& draft = boundary().unsent_of(message);
        if (draft.payload == nullptr) { // a second pointer looks further into the same payload
            draft.payload = static_cast<vor_uchar*>(found);
        }
    }
    return found;
}

void vor_ipc_drop_msg_buf(VOR_IPC_MSG_REF* message)
{
    if (boundary().watching()) {
        std::erase_if(boundary().unsent, [&](const Unsent& one) { return one.message == message->data_ptr; });
    }
    if (!boundary().captures()) {
        pass<vor_ipc_drop_msg_buf>(message);
    }
}

vor_int32 vor_ipc_request_response(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id,
                                   VOR_IPC_MSG_REF* request, VOR_IPC_MSG_REF* response, vor_uint16 payload_length,
                                   vor_uint16 zero)
{
    if (!boundary().watching()) {
        return pass<vor_ipc_request_response>(handle, sap, message_id, request, response, payload_length, zero);
    }
    Message& message = boundary().begin(Way::request, sap, message_id, request, payload_length);
    if (boundary().captures()) {
        return accept_captured(message_id, response);
    }
    errno = 0;
    const auto start = Clock::now();
    const vor_int32 result =
        pass<vor_ipc_request_response>(handle, sap, message_id, request, response, payload_length, zero);
    message.delivered = result == 0;
    if (message.delivered) {
        boundary().take_answer(message, response);
    } else {
        message.unfit = errno == EMSGSIZE ? Unfit::bytes : Unfit::no;
        message.timed_out = waited(start);
        boundary().trace(message.timed_out ? "no answer in time" : "exchange refused");
    }
    return result;
}

vor_int32 vor_ipc_send(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id, VOR_IPC_MSG_REF* message,
                       vor_uint16 payload_length, vor_uint16 zero)
{
    if (!boundary().watching()) {
        return pass<vor_ipc_send>(handle, sap, message_id, message, payload_length, zero);
    }
    Message& sent = boundary().begin(Way::one_way, sap, message_id, message, payload_length);
    if (boundary().captures()) {
        return 0;
    }
    errno = 0;
    const unsigned undelivered = messages_undelivered();
    const vor_int32 result = pass<vor_ipc_send>(handle, sap, message_id, message, payload_length, zero);
    sent.unfit = result != 0 && errno == EMSGSIZE ? Unfit::bytes : Unfit::no;
    sent.unserved = messages_undelivered() != undelivered;
    sent.delivered = result == 0 && !sent.unserved;
    boundary().trace(sent.delivered ? "sent one-way" : sent.unserved ? "nobody listens" : "send refused");
    return result;
}

vor_int32 vor_ipc_debug(VOR_IPC_HANDLE* handle, vor_uint16 module_number)
{
    if (boundary().watching()) {
        boundary().watch->seen.trace_switched = module_number;
    }
    return boundary().captures() ? 0 : pass<vor_ipc_debug>(handle, module_number);
}

void* vor_socket_create(vor_uchar domain, vor_uchar type, vor_uchar protocol)
{
    void* const created =
        boundary().captures() ? &boundary().captured.socket : pass<vor_socket_create>(domain, type, protocol);
    note_connecting(created != nullptr);
    return created;
}

vor_int32 vor_socket_config_unix(void* socket, vor_char* path)
{
    const vor_int32 result = boundary().captures() ? 0 : pass<vor_socket_config_unix>(socket, path);
    note_connecting(result != -1);
    return result;
}

vor_int32 vor_socket_connect(void* socket, vor_uchar option)
{
    const vor_int32 result = boundary().captures() ? 0 : pass<vor_socket_connect>(socket, option);
    note_connecting(result != -1);
    return result;
}

vor_int32 vor_socket_close(void* socket, vor_uchar option)
{
    return socket == &boundary().captured.socket ? 0 : pass<vor_socket_close>(socket, option);
}

vor_int32 vor_send(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    if (!boundary().watching()) {
        return pass<vor_send>(fd, buffer, count, flags);
    }
    Message message;
    message.way = Way::konfd;
    message.counted = count > 0 ? static_cast<std::size_t>(count) : 0;
    message.command.assign(static_cast<char*>(buffer), strnlen(static_cast<char*>(buffer), message.counted));
    Message& sent = boundary().push(std::move(message));
    if (boundary().captures()) {
        return count;
    }
    const vor_int32 result = pass<vor_send>(fd, buffer, count, flags);
    sent.delivered = result != -1;
    return result;
}

// Of konfd's answer only what the calls judge is taken down: the rest may be a stored secret.
vor_int32 vor_recv(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    static constexpr char agreed[] = "-o";
    static constexpr std::size_t judged = 2;
    if (boundary().captures()) {
        std::memcpy(buffer, agreed, judged);
        return judged;
    }
    const vor_int32 result = pass<vor_recv>(fd, buffer, count, flags);
    if (boundary().watching() && result > 0 && !boundary().watch->seen.messages.empty()) {
        const std::size_t length = std::min(static_cast<std::size_t>(result), judged);
        Message& last = boundary().watch->seen.messages.back();
        last.answer = std::string(static_cast<char*>(buffer), strnlen(static_cast<char*>(buffer), length));
        boundary().trace("konfd " + vor::printable(*last.answer));
    }
    return result;
}

VOR_TIMER_HANDLE* vor_timer_create(vor_uint32 option, void* context, VOR_TIMER_CALLBACK callback)
{
    return boundary().captures() ? &boundary().captured.timer : pass<vor_timer_create>(option, context, callback);
}

vor_int32 vor_timer_start(VOR_TIMER_HANDLE* timer, vor_uint32 milliseconds, vor_uint32 option)
{
    if (boundary().watching()) {
        boundary().watch->seen.timer = milliseconds;
    }
    return timer == &boundary().captured.timer ? 0 : pass<vor_timer_start>(timer, milliseconds, option);
}
