#include "request.hpp"

#include <device_mgmt/common.h>

namespace device_mgmt {
namespace {

void read_head(Exchange& exchange, const Slot* description)
{
    __builtin_memcpy(static_cast<Head*>(&exchange), __builtin_assume_aligned(description, alignof(Head)), sizeof(Head));
}

vor_char* text(Argument argument)
{
    return reinterpret_cast<vor_char*>(argument);
}

vor_int32 no_place(Exchange& exchange)
{
    if (exchange.frame.has(null_payload_drops)) {
        vor_ipc_drop_msg_buf(&exchange.request);
        if (!exchange.frame.has(one_way)) {
            vor_ipc_drop_msg_buf(&exchange.response);
        }
    }
    return no_status;
}

// Rarely used elements are kept out of the function that all calls share.
[[gnu::noinline]] void add_address(TLV_CHAIN& chain, vor_uchar tag, vor_char* dotted)
{
    vor_tlv_chain_add_vor_int32(&chain, tag, static_cast<vor_int32>(address_in(dotted)));
}

[[gnu::noinline]] void add_number(TLV_CHAIN& chain, vor_uchar tag, const vor_char* digits)
{
    vor_tlv_chain_add_vor_int16(&chain, tag, static_cast<vor_int16>(number_in(digits)));
}

[[gnu::noinline]] void add_byte(Exchange& exchange, TLV_CHAIN& chain, vor_uchar tag, vor_uchar value)
{
    exchange.byte = value;
    vor_tlv_chain_add_raw(&chain, tag, 1, &exchange.byte);
}

[[gnu::noinline]] void add_all(TLV_CHAIN& chain, vor_uchar tag, Kind kind, Texts& texts)
{
    for (vor_int32 i = 0; i < texts.count; ++i) {
        vor_char* const one = va_arg(texts.list, vor_char*);
        if (kind == Kind::strings) {
            vor_tlv_chain_add_str(&chain, tag, one);
        } else {
            add_address(chain, tag, one);
        }
    }
}

void write_chain(Exchange& exchange, const Slot* slot, va_list values)
{
    TLV_CHAIN chain;
    vor_tlv_chain_init(&chain);
    for (;;) {
        const vor_uchar tag = slot->tag;
        const Kind kind = slot->kind;
        ++slot;
        switch (kind) {
        case Kind::int16:
            vor_tlv_chain_add_vor_int16(&chain, tag, static_cast<vor_int16>(va_arg(values, Argument)));
            break;
        case Kind::int32:
            vor_tlv_chain_add_vor_int32(&chain, tag, static_cast<vor_int32>(va_arg(values, Argument)));
            break;
        case Kind::string:
            vor_tlv_chain_add_str(&chain, tag, text(va_arg(values, Argument)));
            break;
        case Kind::byte:
            add_byte(exchange, chain, tag, static_cast<vor_uchar>(va_arg(values, Argument)));
            break;
        case Kind::address:
            add_address(chain, tag, text(va_arg(values, Argument)));
            break;
        case Kind::number:
            add_number(chain, tag, text(va_arg(values, Argument)));
            break;
        case Kind::strings:
        case Kind::addresses:
            add_all(chain, tag, kind, *reinterpret_cast<Texts*>(va_arg(values, Argument)));
            break;
        case Kind::end:
            exchange.serialize(chain);
            return;
        }
    }
}

void write_record(vor_uchar* payload, const Slot* slot, va_list values)
{
    for (; slot->kind != Kind::end; ++slot) {
        vor_uchar* const place = payload + slot->tag;
        const Argument argument = va_arg(values, Argument);
        const Kind kind = slot->kind;
        const vor_uint32 value = kind == Kind::address  ? address_in(text(argument))
                                 : kind == Kind::number ? number_in(text(argument))
                                                        : static_cast<vor_uint32>(argument);
        if (kind == Kind::byte) {
            *place = static_cast<vor_uchar>(value);
        } else if (kind == Kind::int16 || kind == Kind::number) {
            const auto half = static_cast<vor_uint16>(value);
            __builtin_memcpy(place, &half, sizeof half);
        } else {
            __builtin_memcpy(place, &value, sizeof value);
        }
    }
}

vor_int32 write_payload(Exchange& exchange, const Slot* slots, vor_uint32 record_length, va_list values)
{
    const Frame frame = exchange.frame;
    vor_uint16 offset = 0;
    if (frame.has_any(option_byte, flag_byte)) {
        auto* const place =
            static_cast<vor_uchar*>(frame.has(option_byte) ? vor_ipc_get_meta_data_ptr(&exchange.request)
                                                           : vor_ipc_get_payload_ptr(&exchange.request, 0));
        if (place == nullptr) {
            return no_place(exchange);
        }
        *place = static_cast<vor_uchar>(va_arg(values, Argument));
        offset = 1;
    }
    exchange.payload = payload_of(exchange.request, offset);
    if (exchange.payload == nullptr && (record_length != 0 || frame.has_any(null_payload_keeps, null_payload_drops))) {
        return no_place(exchange);
    }
    if (record_length == 0) {
        write_chain(exchange, slots, values);
    } else {
        write_record(exchange.payload, slots, values);
        exchange.length = static_cast<vor_uint16>(record_length);
    }
    return ok;
}

vor_int32 take_request(Exchange& exchange)
{
    if (exchange.frame.has(clears_errno)) {
        vor_errno = 0;
    }
    exchange.handle = vor_cfg_get_ipc_endpoint();
    if (exchange.handle == nullptr) {
        return no_endpoint;
    }
    return vor_ipc_get_buffer(&exchange.request) == 0 ? ok : no_status;
}

vor_int32 take_response(Exchange& exchange)
{
    if (vor_ipc_get_buffer(&exchange.response) == 0) {
        return ok;
    }
    if (exchange.frame.has(lone_request_dropped)) {
        vor_ipc_drop_msg_buf(&exchange.request);
    }
    return no_status;
}

vor_int32 code_of(const void* status)
{
    if (status == nullptr) {
        return no_status;
    }
    const vor_int32 value = status_at(status);
    if (value == 0) {
        return ok;
    }
    vor_errno = value;
    return refused;
}

} // namespace

vor_int32 Exchange::take_buffers()
{
    length = 0;
    const vor_int32 code = take_request(*this);
    return code != ok || frame.has(one_way) ? code : take_response(*this);
}

void Exchange::serialize(TLV_CHAIN& chain)
{
    vor_int32 size = 0;
    vor_tlv_chain_serialize(&chain, payload, &size);
    vor_tlv_chain_free(&chain, 0);
    length = static_cast<vor_uint16>(size);
}

vor_int32 Exchange::send()
{
    const vor_int32 sent = vor_ipc_send(handle, frame.sap, id.number, &request, length, 0);
    if (frame.has(two_buffer_send)) {
        return sent;
    }
    if (sent != 0 || !frame.has(sent_buffer_kept)) {
        vor_ipc_drop_msg_buf(&request);
    }
    return sent != 0 ? undelivered : ok;
}

vor_int32 Exchange::send_and_receive()
{
    if (vor_ipc_request_response(handle, frame.sap, id.number, &request, &response, length, 0) == 0) {
        return ok;
    }
    vor_ipc_drop_msg_buf(&request);
    if (!frame.has(refused_keeps_response)) {
        vor_ipc_drop_msg_buf(&response);
    }
    return undelivered;
}

bool Exchange::answer_matches() const
{
    const vor_uint32 answer = static_cast<const VOR_IPC_MSG_HDR*>(response.data_ptr)->opcode;
    return (frame.has(id_low_half) ? static_cast<vor_uint16>(answer) : answer) == id.number;
}

vor_int32 Exchange::read_status(const void*& status)
{
    status = nullptr;
    if (frame.has(request_dropped_first)) {
        vor_ipc_drop_msg_buf(&request);
    }
    if (answer_matches()) {
        status = payload_of(response);
        if (status == nullptr && frame.has(empty_answer_keeps)) {
            return no_status;
        }
    }
    return ok;
}

vor_int32 Exchange::evaluate(const void* status)
{
    if (!frame.has_any(request_dropped_first, request_dropped_last)) {
        vor_ipc_drop_msg_buf(&request);
        return code_of(status);
    }
    const vor_int32 code = code_of(status);
    if (frame.has(request_dropped_last)) {
        vor_ipc_drop_msg_buf(&request);
    }
    return code;
}

vor_int32 Exchange::finish(const void* status)
{
    const vor_int32 code = evaluate(status);
    vor_ipc_drop_msg_buf(&response);
    return code;
}

vor_int32 Exchange::finish()
{
    const void* status = nullptr;
    const vor_int32 code = read_status(status);
    return code != ok ? code : finish(status);
}

vor_int32 Exchange::send_and_finish()
{
    if (frame.has_any(one_way, two_buffer_send)) {
        return send();
    }
    const vor_int32 code = send_and_receive();
    return code != ok ? code : finish();
}

void Exchange::drop_buffers()
{
    vor_ipc_drop_msg_buf(&request);
    vor_ipc_drop_msg_buf(&response);
}

vor_ip_address address_in(vor_char* text)
{
    vor_ip_address address = 0;
    if (text != nullptr) {
        ip_aton(text, &address);
    }
    return address;
}

vor_uint16 number_in(const vor_char* text)
{
    return text == nullptr ? vor_uint16{0} : static_cast<vor_uint16>(vor_atoi(text));
}

vor_int32 Exchange::prepare_described_v(const Slot* description, va_list values)
{
    read_head(*this, description);
    const vor_int32 code = take_buffers();
    return code != ok ? code : write_payload(*this, description + head_slots, record_length, values);
}

vor_int32 Exchange::prepare_described(const Slot* description, ...)
{
    va_list values;
    va_start(values, description);
    const vor_int32 code = prepare_described_v(description, values);
    va_end(values);
    return code;
}

vor_int32 send_message(const Slot* description, ...)
{
    Exchange exchange;
    va_list values;
    va_start(values, description);
    const vor_int32 code = exchange.prepare_described_v(description, values);
    va_end(values);
    return code != ok ? code : exchange.send_and_finish();
}

// Most calls are this one, so it is laid out in one piece.
[[gnu::flatten]] vor_int32 request_chain(const Slot* description, ...)
{
    Exchange exchange;
    read_head(exchange, description);
    vor_int32 code = take_request(exchange);
    if (code != ok) {
        return code;
    }
    code = take_response(exchange);
    if (code != ok) {
        return code;
    }
    va_list values;
    va_start(values, description);
    code = write_payload(exchange, description + head_slots, 0, values);
    va_end(values);
    if (code != ok) {
        return code;
    }
    code = exchange.send_and_receive();
    return code != ok ? code : exchange.finish();
}

void* request_statistics(const Slot* description, ...)
{
    Exchange exchange;
    va_list values;
    va_start(values, description);
    const vor_int32 code = exchange.prepare_described_v(description, values);
    va_end(values);
    if (code != ok || exchange.send_and_receive() != ok) {
        return nullptr;
    }
    void* record = nullptr;
    if (exchange.answer_matches()) {
        record = payload_of(exchange.response);
        if (record == nullptr) {
            return nullptr; // both buffers are kept
        }
    }
    exchange.drop_buffers();
    return record;
}

} // namespace device_mgmt
