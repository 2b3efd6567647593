#include "call/boundary.hpp"

#include <algorithm>
#include <cstring>

#include <fmt/core.h>

namespace vorcfg {

Boundary& boundary()
{
    static Boundary only;
    return only;
}

VOR_IPC_HANDLE* captured_endpoint()
{
    return &boundary().captured.handle;
}

Unsent& Boundary::unsent_of(const VOR_IPC_MSG_REF* message)
{
    const auto found = std::ranges::find(unsent, message->data_ptr, &Unsent::message);
    return found != unsent.end() ? *found : unsent.emplace_back(Unsent{message->data_ptr, nullptr, nullptr});
}

bool Boundary::is_secret(const char* text) const
{
    return watching() && std::ranges::any_of(
                             watch->values, [&](const Value& each) { return each.secret && each.text.data() == text; });
}

void Boundary::add(const TLV_CHAIN* to, Element element)
{
    if (watching() && to == chain.chain) {
        chain.elements.push_back(std::move(element));
    }
}

namespace {

// The data that a message of the platform's holds, of one taken and given back.
std::size_t room_of_platform()
{
    VOR_IPC_MSG_REF message{};
    if (pass<vor_ipc_get_buffer>(&message) != 0) {
        return 0;
    }
    const std::size_t size = message.size;
    pass<vor_ipc_drop_msg_buf>(&message);
    return size > sizeof(VOR_IPC_MSG_HDR) ? size - sizeof(VOR_IPC_MSG_HDR) : 0;
}

void take_size(Message& message, const Chain& chain, std::optional<std::size_t>& room)
{
    if (!room) {
        room = room_of_platform();
    }
    const std::size_t size = chain.size + (message.option || message.flag ? 1 : 0);
    if (chain.elements.size() > TLV_CHAIN_CAPACITY) {
        message.unfit = Unfit::elements;
        message.room = TLV_CHAIN_CAPACITY;
    } else if (chain.refused || (*room != 0 && size > *room)) {
        message.unfit = Unfit::bytes;
        message.room = *room;
    }
}

} // namespace

Message& Boundary::begin(Way way, vor_uint16 sap, vor_uint32 id, const VOR_IPC_MSG_REF* sent, vor_uint16 length)
{
    Message message;
    message.way = way;
    message.sap = sap;
    message.id = id;
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
        take_size(message, chain, room);
    }
    return push(std::move(message));
}

Message& Boundary::push(Message message)
{
    if (watch->settings.trace) {
        std::fprintf(stderr, "> %s\n", described(message, watch->row, watch->values).c_str());
    }
    return watch->seen.messages.emplace_back(std::move(message));
}

void Boundary::trace(const std::string& line) const
{
    if (watch->settings.trace && !watch->settings.capture) {
        std::fprintf(stderr, "< %s\n", line.c_str());
    }
}

// A record in an answer begins where others have their status.
void Boundary::take_answer(Message& message, VOR_IPC_MSG_REF* response)
{
    VOR_IPC_MSG_HDR header;
    std::memcpy(&header, response->data_ptr, sizeof header);
    message.answer_id = header.opcode;
    const void* const payload = pass<vor_ipc_get_payload_ptr>(response, static_cast<vor_uint16>(0));
    if (watch->row.answers_record) {
        trace(fmt::format("0x{:x} {}", header.opcode, payload != nullptr ? "record" : "empty"));
    } else if (payload == nullptr || header.payload_sz < sizeof(vor_int32)) {
        trace(fmt::format("0x{:x}, no status", header.opcode));
    } else {
        std::memcpy(&message.answer_status.emplace(), payload, sizeof(vor_int32));
        trace(fmt::format("0x{:x} status {}", header.opcode, *message.answer_status));
    }
}

Watch::Watch(Settings wanted, const Row& called, std::span<const Value> given)
    : settings(wanted), row(called), values(given)
{
    boundary().unsent.clear();
    boundary().chain = {};
    boundary().watch = this;
}

Watch::~Watch()
{
    boundary().watch = nullptr;
    boundary().captured.buffers.clear();
}

} // namespace vorcfg
