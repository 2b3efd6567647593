// The platform's operations as the library finds them: each taken down, and
// passed on or captured.
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>

#include "boundary.hpp"

namespace vorcfg {

static constexpr std::size_t header_size = 16;
static_assert(sizeof(VOR_IPC_MSG_HDR) == header_size);

using Clock = std::chrono::steady_clock;

// A platform that refuses does so at once; who waited before giving up does
// not know what became of the message.
static bool waited(Clock::time_point start)
{
    return errno == ETIMEDOUT || Clock::now() - start >= std::chrono::seconds(1);
}

// The one-way messages that nobody received. Only the development platform
// counts them; of another platform's none is known to be lost.
static unsigned messages_undelivered()
{
    static auto* const operation =
        reinterpret_cast<unsigned (*)()>(dlsym(RTLD_DEFAULT, "vorinfra_messages_undelivered"));
    return operation != nullptr ? operation() : 0;
}

static void note_connecting(bool done)
{
    if (Boundary::watching() && !done) {
        Boundary::watch->seen.unconnected = true;
    }
}

// --- The capturing platform ------------------------------------------------

using Buffer = std::array<vor_uint64, 640>; // header, meta-data and payload, and room to spare
static std::vector<std::unique_ptr<Buffer>> captured;
static VOR_IPC_HANDLE captured_handle{0, 0, nullptr};
static VOR_UNIX_SOCKET captured_socket{-1, 1, 1, nullptr};
static VOR_TIMER_HANDLE captured_timer{nullptr, nullptr};

static vor_int32 accept_captured(vor_uint32 id, VOR_IPC_MSG_REF* response)
{
    VOR_IPC_MSG_HDR header{};
    header.opcode = id;
    std::memcpy(response->data_ptr, &header, sizeof header);
    return 0;
}

} // namespace vorcfg

using namespace vorcfg;

// --- The operations, each passed on ----------------------------------------

vor_int32 vor_tlv_chain_init(TLV_CHAIN* chain)
{
    if (Boundary::watching()) {
        Boundary::chain_built = {chain, nullptr, {}};
    }
    return pass<vor_tlv_chain_init>(chain);
}

vor_int32 vor_tlv_chain_add_str(TLV_CHAIN* chain, vor_uint16 tag, char* string)
{
    Boundary::add(chain, {tag, ElementKind::text, 0, string != nullptr ? string : "",
                          Boundary::watching() && Boundary::is_secret(string)});
    return pass<vor_tlv_chain_add_str>(chain, tag, string);
}

vor_int32 vor_tlv_chain_add_vor_int16(TLV_CHAIN* chain, vor_uint16 tag, vor_int16 value)
{
    Boundary::add(chain, {tag, ElementKind::int16, value, {}, false});
    return pass<vor_tlv_chain_add_vor_int16>(chain, tag, value);
}

vor_int32 vor_tlv_chain_add_vor_int32(TLV_CHAIN* chain, vor_uint16 tag, vor_int32 value)
{
    Boundary::add(chain, {tag, ElementKind::int32, value, {}, false});
    return pass<vor_tlv_chain_add_vor_int32>(chain, tag, value);
}

vor_int32 vor_tlv_chain_add_raw(TLV_CHAIN* chain, vor_uint16 tag, vor_uint16 length, unsigned char* bytes)
{
    Boundary::add(chain, {tag, ElementKind::raw, 0, std::string(reinterpret_cast<char*>(bytes), length), false});
    return pass<vor_tlv_chain_add_raw>(chain, tag, length, bytes);
}

vor_int32 vor_tlv_chain_serialize(TLV_CHAIN* chain, unsigned char* destination, vor_int32* size)
{
    if (Boundary::watching() && chain == Boundary::chain_built.chain) {
        Boundary::chain_built.destination = destination;
    }
    if (Boundary::captures()) {
        *size = 0; // the form on the wire is the platform's
        return 0;
    }
    return pass<vor_tlv_chain_serialize>(chain, destination, size);
}

vor_int32 vor_tlv_chain_free(TLV_CHAIN* chain, vor_uchar flag)
{
    return pass<vor_tlv_chain_free>(chain, flag);
}

VOR_IPC_HANDLE* vor_ipc_bind(vor_uint16 sap, vor_uint16 bind_option)
{
    if (!Boundary::captures()) {
        return pass<vor_ipc_bind>(sap, bind_option);
    }
    captured_handle = {sap, bind_option, nullptr};
    return &captured_handle;
}

vor_bool vor_ipc_unbind(VOR_IPC_HANDLE* handle)
{
    return handle == &captured_handle ? vor_bool(1) : pass<vor_ipc_unbind>(handle);
}

vor_int32 vor_ipc_get_buffer(VOR_IPC_MSG_REF* message)
{
    if (!Boundary::captures()) {
        return pass<vor_ipc_get_buffer>(message);
    }
    *message = {captured.emplace_back(std::make_unique<Buffer>())->data(), sizeof(Buffer), 0, 0};
    return 0;
}

void* vor_ipc_get_meta_data_ptr(VOR_IPC_MSG_REF* message)
{
    void* const found = Boundary::captures() ? static_cast<vor_uchar*>(message->data_ptr) + header_size
                                             : pass<vor_ipc_get_meta_data_ptr>(message);
    if (Boundary::watching()) {
        Boundary::draft_of(message).meta_data = static_cast<vor_uchar*>(found);
    }
    return found;
}

void* vor_ipc_get_payload_ptr(VOR_IPC_MSG_REF* message, vor_uint16 offset)
{
    void* const found = Boundary::captures() ? static_cast<vor_uchar*>(message->data_ptr) + header_size + offset
                                             : pass<vor_ipc_get_payload_ptr>(message, offset);
    if (Boundary::watching()) {
        Draft& draft = Boundary::draft_of(message);
        if (draft.payload == nullptr) { // a second pointer looks further into the same payload
            draft.payload = static_cast<vor_uchar*>(found);
        }
    }
    return found;
}

void vor_ipc_drop_msg_buf(VOR_IPC_MSG_REF* message)
{
    if (Boundary::watching()) {
        std::erase_if(Boundary::drafts, [&](const Draft& draft) { return draft.message == message->data_ptr; });
    }
    if (!Boundary::captures()) {
        pass<vor_ipc_drop_msg_buf>(message);
    }
}

vor_int32 vor_ipc_request_response(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id,
                                   VOR_IPC_MSG_REF* request, VOR_IPC_MSG_REF* response, vor_uint16 payload_length,
                                   vor_uint16 zero)
{
    if (!Boundary::watching()) {
        return pass<vor_ipc_request_response>(handle, sap, message_id, request, response, payload_length, zero);
    }
    Message& message = Boundary::begin(Way::request, sap, message_id, request, payload_length);
    if (Boundary::captures()) {
        return accept_captured(message_id, response);
    }
    errno = 0;
    const auto start = Clock::now();
    const vor_int32 result =
        pass<vor_ipc_request_response>(handle, sap, message_id, request, response, payload_length, zero);
    message.delivered = result == 0;
    if (message.delivered) {
        Boundary::answered(message, response);
    } else {
        message.too_long = errno == EMSGSIZE;
        message.timed_out = waited(start);
        Boundary::tell("< %s\n", message.timed_out ? "no answer in time" : "exchange refused");
    }
    return result;
}

vor_int32 vor_ipc_send(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id, VOR_IPC_MSG_REF* message,
                       vor_uint16 payload_length, vor_uint16 zero)
{
    if (!Boundary::watching()) {
        return pass<vor_ipc_send>(handle, sap, message_id, message, payload_length, zero);
    }
    Message& sent = Boundary::begin(Way::one_way, sap, message_id, message, payload_length);
    if (Boundary::captures()) {
        return 0;
    }
    errno = 0;
    const unsigned undelivered = messages_undelivered();
    const vor_int32 result = pass<vor_ipc_send>(handle, sap, message_id, message, payload_length, zero);
    sent.too_long = result != 0 && errno == EMSGSIZE;
    sent.unserved = messages_undelivered() != undelivered;
    sent.delivered = result == 0 && !sent.unserved;
    Boundary::tell("< %s\n", sent.delivered ? "sent one-way" : sent.unserved ? "nobody listens" : "send refused");
    return result;
}

vor_int32 vor_ipc_debug(VOR_IPC_HANDLE* handle, vor_uint16 module_number)
{
    if (Boundary::watching()) {
        Boundary::watch->seen.trace_switched = module_number;
    }
    return Boundary::captures() ? 0 : pass<vor_ipc_debug>(handle, module_number);
}

void* vor_socket_create(vor_uchar domain, vor_uchar type, vor_uchar protocol)
{
    void* const created = Boundary::captures() ? &captured_socket : pass<vor_socket_create>(domain, type, protocol);
    note_connecting(created != nullptr);
    return created;
}

vor_int32 vor_socket_config_unix(void* socket, vor_char* path)
{
    const vor_int32 result = Boundary::captures() ? 0 : pass<vor_socket_config_unix>(socket, path);
    note_connecting(result != -1);
    return result;
}

vor_int32 vor_socket_connect(void* socket, vor_uchar option)
{
    const vor_int32 result = Boundary::captures() ? 0 : pass<vor_socket_connect>(socket, option);
    note_connecting(result != -1);
    return result;
}

vor_int32 vor_socket_close(void* socket, vor_uchar option)
{
    return socket == &captured_socket ? 0 : pass<vor_socket_close>(socket, option);
}

vor_int32 vor_send(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    if (!Boundary::watching()) {
        return pass<vor_send>(fd, buffer, count, flags);
    }
    Message message;
    message.way = Way::konfd;
    message.counted = count > 0 ? std::size_t(count) : 0;
    message.command.assign(static_cast<char*>(buffer), strnlen(static_cast<char*>(buffer), message.counted));
    Message& sent = Boundary::push(std::move(message));
    const vor_int32 result = Boundary::captures() ? count : pass<vor_send>(fd, buffer, count, flags);
    sent.delivered = result != -1 && !Boundary::captures();
    return result;
}

vor_int32 vor_recv(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    static constexpr char agreed[] = "-o";
    if (Boundary::captures()) {
        std::memcpy(buffer, agreed, sizeof agreed - 1);
        return sizeof agreed - 1;
    }
    const vor_int32 result = pass<vor_recv>(fd, buffer, count, flags);
    if (Boundary::watching() && result > 0 && !Boundary::watch->seen.messages.empty()) {
        std::string answer(static_cast<char*>(buffer), strnlen(static_cast<char*>(buffer), std::size_t(result)));
        answer.erase(answer.find_last_not_of("\r\n") + 1);
        Boundary::tell("< konfd %s\n", answer.c_str());
        Boundary::watch->seen.messages.back().answer = std::move(answer);
    }
    return result;
}

VOR_TIMER_HANDLE* vor_timer_create(vor_uint32 option, void* context, VOR_TIMER_CALLBACK callback)
{
    return Boundary::captures() ? &captured_timer : pass<vor_timer_create>(option, context, callback);
}

vor_int32 vor_timer_start(VOR_TIMER_HANDLE* timer, vor_uint32 milliseconds, vor_uint32 option)
{
    if (Boundary::watching()) {
        Boundary::watch->seen.timer = milliseconds;
    }
    return timer == &captured_timer ? 0 : pass<vor_timer_start>(timer, milliseconds, option);
}
