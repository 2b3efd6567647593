#include "observe.hpp"

#include <cstring>

#include "boundary.hpp"

namespace vorcfg {

Draft& Boundary::draft_of(const VOR_IPC_MSG_REF* message)
{
    for (Draft& draft : drafts) {
        if (draft.message == message->data_ptr) {
            return draft;
        }
    }
    return drafts.emplace_back(Draft{message->data_ptr, nullptr, nullptr});
}

bool Boundary::is_secret(const char* text)
{
    for (const Value& value : watch->values) {
        if (value.secret && value.text.data() == text) {
            return true;
        }
    }
    return false;
}

void Boundary::add(const TLV_CHAIN* chain, Element element)
{
    if (watching() && chain == chain_built.chain) {
        chain_built.elements.push_back(std::move(element));
    }
}

Message& Boundary::begin(Way way, vor_uint16 sap, vor_uint32 id, const VOR_IPC_MSG_REF* sent, vor_uint16 length)
{
    Message message;
    message.way = way;
    message.sap = sap;
    message.id = id;
    const Draft& draft = draft_of(sent);
    if (draft.meta_data != nullptr) {
        message.option = *draft.meta_data;
    }
    if (draft.payload != nullptr && chain_built.destination >= draft.payload &&
        chain_built.destination <= draft.payload + 1) {
        message.chain = true;
        message.elements = chain_built.elements;
        if (chain_built.destination > draft.payload) {
            message.flag = *draft.payload;
        }
    } else if (draft.payload != nullptr) {
        message.record.assign(reinterpret_cast<const char*>(draft.payload), length);
    }
    return push(std::move(message));
}

Message& Boundary::push(Message message)
{
    if (watch->settings.trace) {
        std::fprintf(stderr, "> %s\n", described(message, watch->values).c_str());
    }
    return watch->seen.messages.emplace_back(std::move(message));
}

void Boundary::answered(Message& message, VOR_IPC_MSG_REF* response)
{
    VOR_IPC_MSG_HDR header;
    std::memcpy(&header, response->data_ptr, sizeof header);
    message.answer_id = header.opcode;
    const void* const payload = pass<vor_ipc_get_payload_ptr>(response, vor_uint16(0));
    if (payload == nullptr || header.payload_sz < sizeof(vor_int32)) {
        tell("< 0x%x, no status\n", unsigned(header.opcode));
        return;
    }
    std::memcpy(&message.answer_status.emplace(), payload, sizeof(vor_int32));
    tell("< 0x%x status %d\n", unsigned(header.opcode), int(*message.answer_status));
}

Watch::Watch(Settings wanted, std::span<const Value> given) : settings(wanted), values(given)
{
    Boundary::drafts.clear();
    Boundary::chain_built = {};
    Boundary::watch = this;
}

Watch::~Watch()
{
    Boundary::watch = nullptr;
}

} // namespace vorcfg
