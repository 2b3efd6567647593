// The platform's functions as the library finds them: each call is recorded, and passed on or captured.
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <poll.h>
#include <string>

#include <device_mgmt/common.h>
#include <fmt/core.h>

#include "call/observer.hpp"
#include "input/input_error.hpp"
#include "rows/binding.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

using namespace vorcfg;
using namespace vorcfg::call;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t header_size = sizeof(VOR_IPC_MSG_HDR);

// What is known of a message while the library still builds it.
struct Unsent {
    const void* message = nullptr; // its data_ptr
    const vor_uchar* meta_data = nullptr;
    const vor_uchar* payload = nullptr;
};

struct Chain {
    const TLV_CHAIN* chain = nullptr;
    const vor_uchar* destination = nullptr;
    std::vector<Element> elements;
    std::size_t size = 0; // serialized
    bool refused = false;
};

// Replaces the platform while calls are captured.
struct Captured {
    using Buffer = std::array<vor_uint64, 64>; // header, meta-data and the longest record
    std::vector<std::unique_ptr<Buffer>> buffers;
    VOR_IPC_HANDLE handle{0, 0, nullptr};
    VOR_UNIX_SOCKET socket{-1, 1, 1, nullptr};
    VOR_TIMER_HANDLE timer{nullptr, nullptr};
    const void* empty = nullptr; // the answer that has no payload
};

// The record of the functions called. They have no argument that could carry it, so there is only one.
struct Boundary {
    Observer* observer = nullptr; // the one in scope
    int depth = 0;                // how many of the platform's own functions are running
    std::vector<Unsent> unsent;
    Chain chain; // the library builds one at a time
    Captured captured;
    std::optional<std::size_t> room; // in a message of the platform; 0: not known
};
Boundary boundary;

bool observing()
{
    return boundary.observer != nullptr && boundary.depth == 0;
}

bool captures()
{
    return observing() && boundary.observer->settings.capture;
}

// A platform operation, in the platform library that is loaded behind this executable.
template <auto Operation>
auto* platform()
{
    static const std::string name(rows::symbol_of<Operation>());
    static auto* const found = reinterpret_cast<decltype(Operation)>(dlsym(RTLD_NEXT, name.c_str()));
    if (found == nullptr) {
        std::fprintf(stderr, "vorcfg: the platform library has no %s\n", name.c_str());
        std::_Exit(input::exit_unusable);
    }
    return found;
}

// What the capture pretends.
Pretence pretended()
{
    return boundary.observer->settings.pretence.value_or(Pretence());
}

bool pretends(Pretence::Fate fate)
{
    return captures() && pretended().fate == fate;
}

// Passes an operation on. Operations that the platform itself calls come through here too and are not the library's.
template <auto Operation, class... Arguments>
auto pass(Arguments... arguments)
{
    struct Depth {
        Depth() { boundary.depth++; }
        ~Depth() { boundary.depth--; }
    } const deeper;
    return platform<Operation>()(arguments...);
}

// The same, or `result` while calls are captured.
template <auto Operation, class Result, class... Arguments>
Result pass_or(Result result, Arguments... arguments)
{
    return captures() ? result : pass<Operation>(arguments...);
}

// --- Recording ------------------------------------------------------------------------

Unsent& unsent_of(const VOR_IPC_MSG_REF* message)
{
    const auto found = std::ranges::find(boundary.unsent, message->data_ptr, &Unsent::message);
    return found != boundary.unsent.end() ? *found
                                          : boundary.unsent.emplace_back(Unsent{message->data_ptr, nullptr, nullptr});
}

bool is_secret(const char* text)
{
    return observing() && std::ranges::any_of(boundary.observer->values, [&](const rows::Value& each) {
               return each.secret && each.text.data() == text;
           });
}

// The data behind a message of the platform, read from a message that is allocated and freed.
std::size_t room_of_platform()
{
    VOR_IPC_MSG_REF message{};
    if (pass<vor_ipc_get_buffer>(&message) != 0) {
        return 0;
    }
    const std::size_t size = message.size;
    pass<vor_ipc_drop_msg_buf>(&message);
    return size > header_size ? size - header_size : 0;
}

void take_size(Message& message)
{
    const Chain& chain = boundary.chain;
    if (!boundary.room) {
        boundary.room = room_of_platform();
    }
    const std::size_t room = *boundary.room;
    const std::size_t size = chain.size + (message.option || message.flag ? 1 : 0);
    if (chain.elements.size() > TLV_CHAIN_CAPACITY) {
        message.unfit = Unfit::elements;
        message.room = TLV_CHAIN_CAPACITY;
    } else if (chain.refused || (room != 0 && size > room)) {
        message.unfit = Unfit::bytes;
        message.room = room;
    }
}

void trace(const std::string& line)
{
    if (boundary.observer->settings.trace && !boundary.observer->settings.capture) {
        std::fprintf(stderr, "< %s\n", line.c_str());
    }
}

Message& push(Message message)
{
    Observer& observer = *boundary.observer;
    if (observer.settings.trace) {
        std::fprintf(stderr, "> %s\n", described(message, observer.row, observer.values).c_str());
    }
    return observer.seen.messages.emplace_back(std::move(message));
}

// A message that is sent now; the caller adds its outcome.
Message& begin(Way way, vor_uint16 sap, vor_uint32 id, const VOR_IPC_MSG_REF* sent, vor_uint16 length)
{
    const Chain& chain = boundary.chain;
    Message message{.way = way, .sap = sap, .id = id};
    const Unsent& draft = unsent_of(sent);
    if (draft.meta_data != nullptr) {
        message.option = *draft.meta_data;
    }
    if (draft.payload != nullptr && chain.destination >= draft.payload && chain.destination <= draft.payload + 1) {
        message.chain = true;
        message.elements = chain.elements;
        if (chain.destination > draft.payload) {
            message.flag = *draft.payload;
        }
    } else if (draft.payload != nullptr) {
        message.record.assign(reinterpret_cast<const char*>(draft.payload), length);
    }
    if (captures() && message.chain) {
        take_size(message);
    }
    return push(std::move(message));
}

// A record in an answer begins where others have their status.
void take_answer(Message& message, VOR_IPC_MSG_REF* response)
{
    VOR_IPC_MSG_HDR header;
    std::memcpy(&header, response->data_ptr, sizeof header);
    message.answer_id = header.opcode;
    const void* const payload = pass<vor_ipc_get_payload_ptr>(response, static_cast<vor_uint16>(0));
    if (boundary.observer->row.answers_record) {
        trace(fmt::format("0x{:x} {}", header.opcode, payload != nullptr ? "record" : "empty"));
    } else if (payload == nullptr || header.payload_sz < sizeof(vor_int32)) {
        trace(fmt::format("0x{:x}, no status", header.opcode));
    } else {
        std::memcpy(&message.answer_status.emplace(), payload, sizeof(vor_int32));
        trace(fmt::format("0x{:x} status {}", header.opcode, *message.answer_status));
    }
}

// A platform that refuses does so at once. After a wait, nobody knows whether the message was handled.
bool waited(Clock::time_point start)
{
    return errno == ETIMEDOUT || Clock::now() - start >= std::chrono::seconds(1);
}

// --- konfd's answers: only what the calls evaluate is recorded, since the rest may be a stored secret

constexpr std::size_t answer_length = 2;

void note_answer(Message& message, std::string_view text)
{
    text = text.substr(0, answer_length);
    message.answer = text.substr(0, text.find('\0'));
    trace("konfd " + vor::printable(*message.answer));
}

// A second answer, in what came or comes soon: a call that sends two commands reads one, which may stand for both.
std::string second_answer(vor_int32 fd, std::string_view came)
{
    constexpr std::chrono::milliseconds soon{100};
    const auto deadline = Clock::now() + soon;
    std::string rest(came.substr(std::min(came.size(), came.find_first_of(std::string_view("\n\0", 2)))));
    for (;;) {
        rest.erase(0, rest.find_first_not_of(std::string_view("\r\n\0 ", 4)));
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd ready{fd, POLLIN, 0};
        if (rest.size() >= answer_length || left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) {
            break;
        }
        char more[64];
        const vor_int32 got = pass<vor_recv>(fd, static_cast<void*>(more), static_cast<vor_int32>(sizeof more), 0);
        if (got <= 0) {
            break;
        }
        rest.append(more, static_cast<std::size_t>(got));
    }
    return rest.starts_with('-') ? rest : "";
}

void take_konfd_answer(vor_int32 fd, std::string_view came)
{
    auto& messages = boundary.observer->seen.messages;
    const bool answers_two = messages.size() > 1 && !messages[messages.size() - 2].answer;
    const std::string second = answers_two ? second_answer(fd, came) : "";
    note_answer(messages[messages.size() - (second.empty() ? 1 : 2)], came);
    if (!second.empty()) {
        note_answer(messages.back(), second);
    }
}

void note_connecting(bool done)
{
    if (observing() && !done) {
        boundary.observer->seen.unconnected = true;
    }
}

// The one-way messages that nobody received. Only the development platform counts them.
unsigned messages_undelivered()
{
    static auto* const operation =
        reinterpret_cast<unsigned (*)()>(dlsym(RTLD_DEFAULT, "vorinfra_messages_undelivered"));
    return operation != nullptr ? operation() : 0;
}

vor_int32 answer_captured(Message& message, VOR_IPC_MSG_REF* response)
{
    const Pretence pretence = pretended();
    if (pretence.fate == Pretence::Fate::lost || pretence.fate == Pretence::Fate::refused) {
        message.timed_out = pretence.fate == Pretence::Fate::lost;
        return -1;
    }
    VOR_IPC_MSG_HDR header{};
    header.opcode = pretence.answer_id.value_or(message.id);
    std::memcpy(response->data_ptr, &header, sizeof header);
    boundary.captured.empty = pretence.status ? nullptr : response->data_ptr;
    if (boundary.observer->settings.pretence) {
        message.delivered = true;
        message.answer_id = header.opcode;
        message.answer_status = boundary.observer->row.answers_record ? std::nullopt : pretence.status;
        const vor_int32 status = pretence.status.value_or(0);
        std::memcpy(static_cast<vor_uchar*>(response->data_ptr) + header_size, &status, sizeof status);
    }
    return 0;
}

// The form on the wire is the platform's, and so is its size; it needs no more
// room than this.
vor_int32 serialize_captured(TLV_CHAIN* chain, vor_int32* size)
{
    static constexpr std::size_t most_around_an_element = 64;
    std::size_t room = most_around_an_element;
    for (const Element& element : boundary.chain.elements) {
        room += element.bytes.size() + most_around_an_element;
    }
    std::vector<vor_uchar> scratch(room);
    *size = 0;
    const vor_int32 result = pass<vor_tlv_chain_serialize>(chain, scratch.data(), size);
    boundary.chain.size = *size > 0 ? static_cast<std::size_t>(*size) : 0;
    boundary.chain.refused = boundary.chain.refused || result != 0;
    return result;
}

template <auto Operation, class... Arguments>
vor_int32 add(TLV_CHAIN* chain, Element element, Arguments... arguments)
{
    if (observing() && chain == boundary.chain.chain) {
        boundary.chain.elements.push_back(std::move(element));
    }
    const vor_int32 result = pass<Operation>(chain, arguments...);
    boundary.chain.refused = boundary.chain.refused || (captures() && result != 0);
    return result;
}

} // namespace

// A socket's name is its SAP: sap-0 to sap-240 are managers'.
std::string vorcfg::call::deserted_directory()
{
    constexpr std::string_view prefix = "sap-";
    static auto* const operation = reinterpret_cast<const char* (*)()>(dlsym(RTLD_DEFAULT, "vorinfra_directory"));
    const char* const directory = operation != nullptr ? operation() : nullptr;
    if (directory == nullptr) {
        return {};
    }
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(directory, ignored)) {
        const std::string name = entry.path().filename().string();
        const bool is_manager =
            name.starts_with(prefix) && vor::number_in<unsigned>(name.substr(prefix.size())).value_or(0) < first_sap;
        if (is_manager || name == "konfd.socket") {
            return {};
        }
    }
    return directory;
}

Observer::Observer(Settings how, const rows::Row& called, std::span<const rows::Value> given)
    : settings(how), row(called), values(given), endpoint_(vor_cfg_get_ipc_endpoint())
{
    boundary.unsent.clear();
    boundary.chain = {};
    boundary.observer = this;
    if (settings.capture) {
        vor_cfg_set_ipc_endpoint(pretends(Pretence::Fate::unconnected) ? nullptr : &boundary.captured.handle);
    }
}

Observer::~Observer()
{
    if (settings.capture) {
        vor_cfg_set_ipc_endpoint(endpoint_);
    }
    boundary.observer = nullptr;
    boundary.captured.buffers.clear();
}

vor_int32 vor_tlv_chain_init(TLV_CHAIN* chain)
{
    if (observing()) {
        boundary.chain = {};
        boundary.chain.chain = chain;
    }
    return pass<vor_tlv_chain_init>(chain);
}

vor_int32 vor_tlv_chain_add_str(TLV_CHAIN* chain, vor_uint16 tag, char* string)
{
    Element element{tag, Element::Kind::text, 0, string != nullptr ? string : "", is_secret(string)};
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
    if (observing() && chain == boundary.chain.chain) {
        boundary.chain.destination = destination;
    }
    return captures() ? serialize_captured(chain, size) : pass<vor_tlv_chain_serialize>(chain, destination, size);
}

vor_int32 vor_tlv_chain_free(TLV_CHAIN* chain, vor_uchar flag)
{
    return pass<vor_tlv_chain_free>(chain, flag);
}

vor_int32 vor_ipc_get_buffer(VOR_IPC_MSG_REF* message)
{
    if (!captures()) {
        return pass<vor_ipc_get_buffer>(message);
    }
    if (pretends(Pretence::Fate::no_buffer)) {
        return -1;
    }
    auto& buffers = boundary.captured.buffers;
    *message = {buffers.emplace_back(std::make_unique<Captured::Buffer>())->data(), sizeof(Captured::Buffer), 0, 0};
    std::memset(message->data_ptr, pretended().filling, sizeof(Captured::Buffer));
    return 0;
}

void* vor_ipc_get_meta_data_ptr(VOR_IPC_MSG_REF* message)
{
    void* const found = captures() ? static_cast<vor_uchar*>(message->data_ptr) + header_size
                                   : pass<vor_ipc_get_meta_data_ptr>(message);
    if (observing()) {
        unsent_of(message).meta_data = static_cast<vor_uchar*>(found);
    }
    return found;
}

void* vor_ipc_get_payload_ptr(VOR_IPC_MSG_REF* message, vor_uint16 offset)
{
    if (captures() && message->data_ptr == boundary.captured.empty) {
        return nullptr;
    }
    void* const found = captures() ? static_cast<vor_uchar*>(message->data_ptr) + header_size + offset
                                   : pass<vor_ipc_get_payload_ptr>(message, offset);
    if (observing()) {
        Unsent& draft = unsent_of(message);
        if (draft.payload == nullptr) { // a second pointer looks further into the same payload
            draft.payload = static_cast<vor_uchar*>(found);
        }
    }
    return found;
}

void vor_ipc_drop_msg_buf(VOR_IPC_MSG_REF* message)
{
    if (observing()) {
        std::erase_if(boundary.unsent, [&](const Unsent& one) { return one.message == message->data_ptr; });
    }
    if (!captures()) {
        pass<vor_ipc_drop_msg_buf>(message);
    }
}

vor_int32 vor_ipc_request_response(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id,
                                   VOR_IPC_MSG_REF* request, VOR_IPC_MSG_REF* response, vor_uint16 payload_length,
                                   vor_uint16 zero)
{
    if (!observing()) {
        return pass<vor_ipc_request_response>(handle, sap, message_id, request, response, payload_length, zero);
    }
    Message& message = begin(Way::request, sap, message_id, request, payload_length);
    if (captures()) {
        return answer_captured(message, response);
    }
    errno = 0;
    const auto start = Clock::now();
    const vor_int32 result =
        pass<vor_ipc_request_response>(handle, sap, message_id, request, response, payload_length, zero);
    message.delivered = result == 0;
    if (message.delivered) {
        take_answer(message, response);
    } else {
        message.unfit = errno == EMSGSIZE ? Unfit::bytes : Unfit::no;
        message.timed_out = waited(start);
        trace(message.timed_out ? "no answer in time" : "exchange refused");
    }
    return result;
}

vor_int32 vor_ipc_send(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id, VOR_IPC_MSG_REF* message,
                       vor_uint16 payload_length, vor_uint16 zero)
{
    if (!observing()) {
        return pass<vor_ipc_send>(handle, sap, message_id, message, payload_length, zero);
    }
    Message& sent = begin(Way::one_way, sap, message_id, message, payload_length);
    if (captures()) {
        const bool is_taken = pretended().fate != Pretence::Fate::refused;
        sent.delivered = is_taken && boundary.observer->settings.pretence;
        return is_taken ? 0 : -1;
    }
    errno = 0;
    const unsigned undelivered = messages_undelivered();
    const vor_int32 result = pass<vor_ipc_send>(handle, sap, message_id, message, payload_length, zero);
    sent.unfit = result != 0 && errno == EMSGSIZE ? Unfit::bytes : Unfit::no;
    sent.unserved = messages_undelivered() != undelivered;
    sent.delivered = result == 0 && !sent.unserved;
    trace(sent.delivered ? "sent one-way" : sent.unserved ? "nothing listens" : "send refused");
    return result;
}

vor_int32 vor_ipc_debug(VOR_IPC_HANDLE* handle, vor_uint16 module_number)
{
    if (observing()) {
        boundary.observer->seen.trace_switched = module_number;
    }
    return pass_or<vor_ipc_debug>(0, handle, module_number);
}

void* vor_socket_create(vor_uchar domain, vor_uchar type, vor_uchar protocol)
{
    void* const created =
        pass_or<vor_socket_create>(static_cast<void*>(&boundary.captured.socket), domain, type, protocol);
    note_connecting(created != nullptr);
    return created;
}

vor_int32 vor_socket_config_unix(void* socket, vor_char* path)
{
    const vor_int32 result = pass_or<vor_socket_config_unix>(0, socket, path);
    note_connecting(result != -1);
    return result;
}

vor_int32 vor_socket_connect(void* socket, vor_uchar option)
{
    const vor_int32 taken = pretends(Pretence::Fate::unconnected) ? -1 : 0;
    const vor_int32 result = pass_or<vor_socket_connect>(taken, socket, option);
    note_connecting(result != -1);
    return result;
}

vor_int32 vor_socket_close(void* socket, vor_uchar option)
{
    return socket == &boundary.captured.socket ? 0 : pass<vor_socket_close>(socket, option);
}

vor_int32 vor_send(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    if (!observing()) {
        return pass<vor_send>(fd, buffer, count, flags);
    }
    Message message;
    message.way = Way::konfd;
    message.counted = count > 0 ? static_cast<std::size_t>(count) : 0;
    message.command.assign(static_cast<char*>(buffer), strnlen(static_cast<char*>(buffer), message.counted));
    Message& sent = push(std::move(message));
    if (captures()) {
        const bool is_taken = pretended().fate != Pretence::Fate::refused;
        sent.delivered = is_taken && boundary.observer->settings.pretence;
        return is_taken ? count : -1;
    }
    const vor_int32 result = pass<vor_send>(fd, buffer, count, flags);
    sent.delivered = result != -1;
    return result;
}

vor_int32 vor_recv(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    static constexpr char agreed[] = "-o";
    if (captures()) {
        const std::string_view answer = pretended().konfd;
        if (pretends(Pretence::Fate::lost)) {
            return -1;
        }
        if (boundary.observer->settings.pretence) {
            note_answer(boundary.observer->seen.messages.back(), answer);
        }
        std::memcpy(buffer, answer.data(), answer_length);
        return answer_length;
    }
    vor_int32 result = pass<vor_recv>(fd, buffer, count, flags);
    if (!observing() || result <= 0 || boundary.observer->seen.messages.empty()) {
        return result;
    }
    char* const text = static_cast<char*>(buffer);
    if (result == 1 && count > 1 && text[0] == agreed[0]) { // the rest is on its way
        result += std::max(0, pass<vor_recv>(fd, static_cast<void*>(text + 1), count - 1, flags));
    }
    take_konfd_answer(fd, {text, static_cast<std::size_t>(result)});
    return result;
}

VOR_TIMER_HANDLE* vor_timer_create(vor_uint32 option, void* context, VOR_TIMER_CALLBACK callback)
{
    return pass_or<vor_timer_create>(&boundary.captured.timer, option, context, callback);
}

vor_int32 vor_timer_start(VOR_TIMER_HANDLE* timer, vor_uint32 milliseconds, vor_uint32 option)
{
    if (observing()) {
        boundary.observer->seen.timer = milliseconds;
    }
    return timer == &boundary.captured.timer ? 0 : pass<vor_timer_start>(timer, milliseconds, option);
}
