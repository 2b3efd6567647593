#include "frame.hpp"

#include <device_mgmt/common.h>

namespace {

vor_int32 no_place(Call& call, Frame frame)
{
    if ((frame & null_payload_drops) != 0) {
        vor_ipc_drop_msg_buf(&call.request);
        if ((frame & one_way) == 0) {
            vor_ipc_drop_msg_buf(&call.response);
        }
    }
    return no_status;
}

vor_char* text(Argument argument)
{
    return reinterpret_cast<vor_char*>(argument);
}

// What few calls hold stays out of the one piece that all others run through.
[[gnu::noinline]] void add_address(TLV_CHAIN& chain, vor_uchar tag, vor_char* dotted)
{
    vor_tlv_chain_add_vor_int32(&chain, tag, static_cast<vor_int32>(address_in(dotted)));
}

[[gnu::noinline]] void add_number(TLV_CHAIN& chain, vor_uchar tag, const vor_char* digits)
{
    vor_tlv_chain_add_vor_int16(&chain, tag, static_cast<vor_int16>(number_in(digits)));
}

[[gnu::noinline]] void add_byte(Call& call, TLV_CHAIN& chain, vor_uchar tag, vor_uchar value)
{
    call.byte = value;
    vor_tlv_chain_add_raw(&chain, tag, 1, &call.byte);
}

[[gnu::noinline]] void add_all(TLV_CHAIN& chain, vor_uchar tag, Kind kind, Arguments& texts)
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

// The arguments come in the order of the elements.
void write_chain(Call& call, const Element* element, Arguments arguments)
{
    TLV_CHAIN chain;
    vor_tlv_chain_init(&chain);
    for (;;) {
        const vor_uchar tag = element->tag;
        const Kind kind = element->kind;
        ++element;
        switch (kind) {
        case Kind::int16:
            vor_tlv_chain_add_vor_int16(&chain, tag, static_cast<vor_int16>(va_arg(arguments.list, Argument)));
            break;
        case Kind::int32:
            vor_tlv_chain_add_vor_int32(&chain, tag, static_cast<vor_int32>(va_arg(arguments.list, Argument)));
            break;
        case Kind::string:
            vor_tlv_chain_add_str(&chain, tag, text(va_arg(arguments.list, Argument)));
            break;
        case Kind::byte:
            add_byte(call, chain, tag, static_cast<vor_uchar>(va_arg(arguments.list, Argument)));
            break;
        case Kind::address:
            add_address(chain, tag, text(va_arg(arguments.list, Argument)));
            break;
        case Kind::number:
            add_number(chain, tag, text(va_arg(arguments.list, Argument)));
            break;
        case Kind::strings:
        case Kind::addresses:
            add_all(chain, tag, kind, *reinterpret_cast<Arguments*>(va_arg(arguments.list, Argument)));
            break;
        case Kind::end:
            serialize(call, chain);
            return;
        }
    }
}

void write_record(const Element* element, vor_uchar* payload, Arguments arguments)
{
    if (payload == nullptr) {
        __builtin_unreachable(); // a record's frame looks at its place first
    }
    for (; element->kind != Kind::end; ++element) {
        vor_uchar* const place = payload + element->tag;
        const Argument argument = va_arg(arguments.list, Argument);
        const Kind kind = element->kind;
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

vor_int32 fill(Call& call, Frame frame, const Element* elements, vor_uint16 record_length, Arguments arguments)
{
    vor_uint16 offset = 0;
    if ((frame & (option_byte | flag_byte)) != 0) {
        auto* const place =
            static_cast<vor_uchar*>((frame & option_byte) != 0 ? vor_ipc_get_meta_data_ptr(&call.request)
                                                               : vor_ipc_get_payload_ptr(&call.request, 0));
        if (place == nullptr) {
            return no_place(call, frame);
        }
        *place = static_cast<vor_uchar>(va_arg(arguments.list, Argument));
        offset = 1;
    }
    call.payload = payload_of(call.request, offset);
    if (call.payload == nullptr && (frame & (null_payload_keeps | null_payload_drops)) != 0) {
        return no_place(call, frame);
    }
    if (record_length == 0) {
        write_chain(call, elements, arguments);
    } else {
        write_record(elements, call.payload, arguments);
        call.length = record_length;
    }
    return ok;
}

vor_int32 ready(Call& call, const Description& description, Arguments arguments)
{
    const Frame frame = description.frame;
    const vor_int32 code = take(call, frame);
    return code != ok ? code : fill(call, frame, description.elements(), description.record_length, arguments);
}

vor_int32 take_request(Call& call, Frame frame)
{
    if ((frame & clears_errno) != 0) {
        vor_errno = 0;
    }
    call.handle = vor_cfg_get_ipc_endpoint();
    if (call.handle == nullptr) {
        return no_endpoint;
    }
    return vor_ipc_get_buffer(&call.request) == 0 ? ok : no_status;
}

vor_int32 take_response(Call& call, Frame frame)
{
    if (vor_ipc_get_buffer(&call.response) == 0) {
        return ok;
    }
    if ((frame & lone_request_dropped) != 0) {
        vor_ipc_drop_msg_buf(&call.request);
    }
    return no_status;
}

// What the status says: a refusal's is in vor_errno afterwards.
vor_int32 told(const void* status)
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

vor_int32 take(Call& call, Frame frame)
{
    call.length = 0;
    const vor_int32 code = take_request(call, frame);
    return code != ok || (frame & one_way) != 0 ? code : take_response(call, frame);
}

void serialize(Call& call, TLV_CHAIN& chain)
{
    vor_int32 size = 0;
    vor_tlv_chain_serialize(&chain, call.payload, &size);
    vor_tlv_chain_free(&chain, 0);
    call.length = static_cast<vor_uint16>(size);
}

vor_int32 post(Call& call, Frame frame, vor_uint32 id)
{
    const vor_int32 sent = vor_ipc_send(call.handle, static_cast<vor_uint16>(frame), id, &call.request, call.length, 0);
    if ((frame & two_buffer_send) != 0) {
        return sent;
    }
    if (sent != 0 || (frame & sent_buffer_kept) == 0) {
        vor_ipc_drop_msg_buf(&call.request);
    }
    return sent != 0 ? undelivered : ok;
}

vor_int32 exchange(Call& call, Frame frame, vor_uint32 id)
{
    if (vor_ipc_request_response(call.handle, static_cast<vor_uint16>(frame), id, &call.request, &call.response,
                                 call.length, 0) == 0) {
        return ok;
    }
    vor_ipc_drop_msg_buf(&call.request);
    if ((frame & refused_keeps_response) == 0) {
        vor_ipc_drop_msg_buf(&call.response);
    }
    return undelivered;
}

vor_uint32 answer_id(const Call& call)
{
    return static_cast<const VOR_IPC_MSG_HDR*>(call.response.data_ptr)->opcode;
}

bool answers(const Call& call, Frame frame, vor_uint32 id)
{
    vor_uint32 answer = answer_id(call);
    if ((frame & id_low_half) != 0) {
        answer = static_cast<vor_uint16>(answer);
    }
    return answer == id;
}

vor_int32 look(Call& call, Frame frame, vor_uint32 id, const void*& status)
{
    status = nullptr;
    if ((frame & request_dropped_first) != 0) {
        vor_ipc_drop_msg_buf(&call.request);
    }
    if (answers(call, frame, id)) {
        status = payload_of(call.response);
        if (status == nullptr && (frame & empty_answer_keeps) != 0) {
            return no_status;
        }
    }
    return ok;
}

vor_int32 judge(Call& call, Frame frame, const void* status)
{
    if ((frame & (request_dropped_first | request_dropped_last)) == 0) {
        vor_ipc_drop_msg_buf(&call.request);
        return told(status);
    }
    const vor_int32 code = told(status);
    if ((frame & request_dropped_last) != 0) {
        vor_ipc_drop_msg_buf(&call.request);
    }
    return code;
}

vor_int32 settle(Call& call, Frame frame, const void* status)
{
    const vor_int32 code = judge(call, frame, status);
    vor_ipc_drop_msg_buf(&call.response);
    return code;
}

vor_int32 verdict(Call& call, Frame frame, vor_uint32 id)
{
    const void* status = nullptr;
    const vor_int32 code = look(call, frame, id, status);
    return code != ok ? code : settle(call, frame, status);
}

vor_int32 conclude(Call& call, Frame frame, vor_uint32 id)
{
    if ((frame & (one_way | two_buffer_send)) != 0) {
        return post(call, frame, id);
    }
    const vor_int32 code = exchange(call, frame, id);
    return code != ok ? code : verdict(call, frame, id);
}

void drop_both(Call& call)
{
    vor_ipc_drop_msg_buf(&call.request);
    vor_ipc_drop_msg_buf(&call.response);
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

vor_int32 prepare_described(Call* call, const Description* description, ...)
{
    Arguments arguments{};
    va_start(arguments.list, description);
    const vor_int32 code = ready(*call, *description, arguments);
    va_end(arguments.list);
    return code;
}

vor_int32 message_described(const Description* description, ...)
{
    Call call;
    Arguments arguments{};
    va_start(arguments.list, description);
    const vor_int32 code = ready(call, *description, arguments);
    va_end(arguments.list);
    return code != ok ? code : conclude(call, description->frame, description->id);
}

// Most calls are this one, so it is laid out in one piece.
[[gnu::flatten]] vor_int32 request_described(const Description* description, ...)
{
    const Frame frame = description->frame;
    Call call;
    vor_int32 code = take_request(call, frame);
    if (code != ok) {
        return code;
    }
    code = take_response(call, frame);
    if (code != ok) {
        return code;
    }
    Arguments arguments{};
    va_start(arguments.list, description);
    code = fill(call, frame, description->elements(), 0, arguments);
    va_end(arguments.list);
    if (code != ok) {
        return code;
    }
    code = exchange(call, frame, description->id);
    return code != ok ? code : verdict(call, frame, description->id);
}

void* statistics_described(const Description* description, ...)
{
    const Frame frame = description->frame;
    Call call;
    Arguments arguments{};
    va_start(arguments.list, description);
    const vor_int32 code = ready(call, *description, arguments);
    va_end(arguments.list);
    if (code != ok || exchange(call, frame, description->id) != ok) {
        return nullptr;
    }
    void* record = nullptr;
    if (answers(call, frame, description->id)) {
        record = payload_of(call.response);
        if (record == nullptr) {
            return nullptr; // both buffers stay taken
        }
    }
    drop_both(call);
    return record;
}
