#include "state.hpp"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace fake {

Script script;
State state;

namespace {

VOR_IPC_HANDLE the_handle = {};

std::string hex(const char* format, vor_uint32 value)
{
    char text[16];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

// A chain behind nothing, an option byte or a flag byte.
std::string chain_text(Buffer& buffer, int length)
{
    std::string text;
    const bool flag = buffer.chain_at == 1 && !buffer.meta_data_taken;
    if (buffer.chain_at == 1) {
        text = text_of(flag ? " flag " : " option ", hex("0x%02x", *buffer.data()));
    } else if (buffer.chain_at != 0 || buffer.meta_data_taken) {
        text = text_of(" behind", bytes_text(buffer.data(), buffer.chain_at));
    }
    const auto* chain = buffer.data() + buffer.chain_at;
    text.append(chain, chain + buffer.chain_size);
    if (length != buffer.chain_size + (flag ? 1 : 0)) {
        text += text_of(" (length ", length, " for a chain of ", buffer.chain_size, ")");
    }
    return text;
}

// A record, and what was written behind the length sent.
std::string record_text(Buffer& buffer, int length)
{
    const auto end = std::find_if(buffer.bytes.rbegin(), buffer.bytes.rend() - Buffer::header,
                                  [](vor_uchar byte) { return byte != pattern; });
    const int written = static_cast<int>(buffer.bytes.rend() - end) - Buffer::header;
    std::string text = text_of(" record ", length, ":", bytes_text(buffer.data(), length));
    if (buffer.meta_data_taken) {
        text += " (meta-data taken)";
    }
    if (written > length) {
        text += text_of(" behind:", bytes_text(buffer.data() + length, written - length));
    }
    return text;
}

void note_message(const char* way, const VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 id,
                  const VOR_IPC_MSG_REF* message, vor_uint16 length, vor_uint16 zero)
{
    std::string text = text_of("sap ", sap, " id ", hex("0x%x", id), way);
    Buffer* buffer = buffer_of(message);
    if (buffer == nullptr || buffer->dropped) {
        text += " in no buffer of the caller's";
    } else if (buffer->chain_at >= 0) {
        text += chain_text(*buffer, length);
    } else {
        text += length == 0 ? " empty" : record_text(*buffer, length);
    }
    if (handle != &the_handle) {
        text += " (foreign handle)";
    }
    if (zero != 0) {
        text += text_of(" (last argument ", zero, ")");
    }
    if (!state.chains.empty()) {
        text += " (chain not freed)";
    }
    note(text);
}

} // namespace

void note(std::string event)
{
    state.events.push_back(std::move(event));
}

Buffer* buffer_of(const VOR_IPC_MSG_REF* message)
{
    const auto found = std::find_if(state.buffers.begin(), state.buffers.end(),
                                    [&](Buffer& buffer) { return buffer.bytes.data() == message->data_ptr; });
    return found == state.buffers.end() ? nullptr : &*found;
}

void reset()
{
    script = {};
    state = {};
}

std::string events()
{
    std::string text;
    for (const auto& event : state.events) {
        text += text_of(text.empty() ? "" : "; ", event);
    }
    return text.empty() ? "nothing" : text;
}

std::string event_names()
{
    std::string text;
    for (const auto& event : state.events) {
        text += text_of(text.empty() ? "" : " ", event.substr(0, event.find(' ')));
    }
    return text;
}

void step(char letter)
{
    if (script.witness) {
        script.witness();
    }
    mark(letter);
}

void mark(char letter)
{
    state.steps += letter;
}

std::string steps()
{
    if (script.witness) {
        script.witness();
    }
    return state.steps;
}

void note_text_read()
{
    if (!state.place_given && state.chains.empty()) {
        mark('r');
    }
}

VOR_IPC_HANDLE* handle()
{
    return &the_handle;
}

vor_uchar* data_of_buffer(int nth)
{
    return state.buffers.at(static_cast<size_t>(nth) - 1).data();
}

} // namespace fake

using namespace fake;

vor_int32 vor_tlv_chain_init(TLV_CHAIN* chain)
{
    step('i');
    chain->used = 0;
    state.chains[chain].clear();
    return 0;
}

namespace {

vor_int32 add(TLV_CHAIN* chain, const Element& element)
{
    if (!state.chains.contains(chain)) {
        note("an element for a chain that was never begun");
        return -1;
    }
    if (chain->used == TLV_CHAIN_CAPACITY) {
        return -1;
    }
    if (!state.steps.ends_with('e')) {
        step('e');
    }
    ++chain->used;
    state.chains[chain].push_back(element);
    return 0;
}

} // namespace

vor_int32 vor_tlv_chain_add_str(TLV_CHAIN* chain, vor_uint16 tag, char* string)
{
    return add(chain, {tag, "str", 0, string});
}

vor_int32 vor_tlv_chain_add_vor_int16(TLV_CHAIN* chain, vor_uint16 tag, vor_int16 value)
{
    return add(chain, {tag, "i16", value, nullptr});
}

vor_int32 vor_tlv_chain_add_vor_int32(TLV_CHAIN* chain, vor_uint16 tag, vor_int32 value)
{
    return add(chain, {tag, "i32", value, nullptr});
}

vor_int32 vor_tlv_chain_add_raw(TLV_CHAIN* chain, vor_uint16 tag, vor_uint16 length, unsigned char* bytes)
{
    return add(chain, {tag, "raw", length, bytes});
}

// The fake's serialized form is the text that the tests compare.
vor_int32 vor_tlv_chain_serialize(TLV_CHAIN* chain, unsigned char* destination, vor_int32* size)
{
    step('w');
    std::string text;
    for (const Element& element : state.chains[chain]) {
        text += text_of(" | ", element.tag, " ", element.kind);
        if (element.kind[0] == 'i') {
            text += text_of(" ", element.number);
        } else if (element.bytes == nullptr) {
            text += " null";
        } else if (element.kind[0] == 's') {
            text += text_of(" '", static_cast<const char*>(element.bytes), "'");
        } else {
            text += bytes_text(static_cast<const vor_uchar*>(element.bytes), element.number);
        }
    }
    if (destination == nullptr) {
        *size = 0;
        return -1;
    }
    text.copy(reinterpret_cast<char*>(destination), text.size());
    *size = script.serialized_size.value_or(static_cast<vor_int32>(text.size()));
    for (Buffer& buffer : state.buffers) {
        const auto at = destination - buffer.data();
        if (at >= 0 && at < Buffer::room) {
            buffer.chain_at = static_cast<int>(at);
            buffer.chain_size = static_cast<int>(text.size());
        }
    }
    return 0;
}

vor_int32 vor_tlv_chain_free(TLV_CHAIN* chain, vor_uchar flag)
{
    if (flag != 0) {
        note(text_of("a chain freed with flag ", +flag));
    }
    state.chains.erase(chain);
    step('f');
    if (const std::string in_one_go = "iewf"; state.steps.ends_with(in_one_go)) {
        state.steps.replace(state.steps.size() - in_one_go.size(), in_one_go.size(), "c");
    }
    return 0;
}

VOR_IPC_HANDLE* vor_ipc_bind(vor_uint16 sap, vor_uint16 bind_option)
{
    note(text_of("bind ", sap, " ", bind_option));
    return script.bind_fails ? nullptr : &the_handle;
}

vor_bool vor_ipc_unbind(VOR_IPC_HANDLE* handle)
{
    note(handle == nullptr ? "unbind null" : "unbind");
    return script.unbind_result;
}

vor_int32 vor_ipc_get_buffer(VOR_IPC_MSG_REF* message)
{
    ++state.buffers_asked;
    step(state.buffers_asked == 1 ? 'Q' : state.buffers_asked == 2 ? 'P' : '?');
    if (state.buffers_asked == script.failing_buffer) {
        return 1;
    }
    message->data_ptr = state.buffers.emplace_back().bytes.data();
    return 0;
}

void* vor_ipc_get_meta_data_ptr(VOR_IPC_MSG_REF* message)
{
    step('m');
    Buffer* buffer = buffer_of(message);
    if (buffer == nullptr || script.null_meta_data) {
        return nullptr;
    }
    buffer->meta_data_taken = true;
    return buffer->data();
}

void* vor_ipc_get_payload_ptr(VOR_IPC_MSG_REF* message, vor_uint16 offset)
{
    Buffer* buffer = buffer_of(message);
    if (buffer == nullptr) {
        return nullptr;
    }
    const bool answer = state.buffers.size() > 1 && buffer == &state.buffers[1];
    if (answer) {
        step('a');
    }
    if (!answer || offset != 0) {
        step(static_cast<char>('0' + offset));
    }
    if (script.null_payload == (answer ? 2 : 1) && offset >= script.null_payload_from) {
        return nullptr;
    }
    state.place_given |= !answer;
    return buffer->data() + offset + (answer ? script.answer_skew : 0);
}

void vor_ipc_drop_msg_buf(VOR_IPC_MSG_REF* message)
{
    Buffer* buffer = buffer_of(message);
    if (buffer == nullptr || buffer->dropped) {
        step('!');
        return;
    }
    buffer->dropped = true;
    step(buffer == &state.buffers[0] ? 'q' : buffer == &state.buffers[1] ? 'p' : '?');
    if (!script.dropped_buffers_stay) {
        std::fill(buffer->bytes.begin(), buffer->bytes.end(), static_cast<vor_uchar>(~pattern));
    }
}

vor_int32 vor_ipc_request_response(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id,
                                   VOR_IPC_MSG_REF* request, VOR_IPC_MSG_REF* response, vor_uint16 payload_length,
                                   vor_uint16 zero)
{
    step('x');
    note_message("", handle, sap, message_id, request, payload_length, zero);
    Buffer* answer = buffer_of(response);
    if (answer == nullptr || answer->dropped || request == response) {
        note("no buffer for the answer");
        return -1;
    }
    if (script.exchange_result != 0) {
        return script.exchange_result;
    }
    const VOR_IPC_MSG_HDR header = {
        .ipc_src_id = sap,
        .ipc_dest_id = 0,
        .opcode = script.answer_id.value_or(message_id) ^ script.answer_id_flips,
        .flag = 0xffff,
        .payload_sz = 0xffff,
        .meta_data_sz = 0xffff,
    };
    std::memcpy(answer->bytes.data(), &header, sizeof header);
    std::copy(script.answer.begin(), script.answer.end(), answer->data() + script.answer_skew);
    return 0;
}

vor_int32 vor_ipc_send(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id, VOR_IPC_MSG_REF* message,
                       vor_uint16 payload_length, vor_uint16 zero)
{
    step('s');
    note_message(" one-way", handle, sap, message_id, message, payload_length, zero);
    return script.send_result;
}

vor_int32 vor_ipc_debug(VOR_IPC_HANDLE* handle, vor_uint16 module_number)
{
    step('d');
    note(text_of("debug ", module_number, handle == &the_handle ? "" : " (foreign handle)"));
    return -1;
}
