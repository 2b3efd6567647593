#include "platform.h"

#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

static struct {
    enum fault fault;
    char journal[4096];
    size_t written;
    int buffers;
    uintptr_t top;
    uintptr_t deepest;
} state;

static struct {
    VOR_IPC_MSG_HDR header;
    vor_int32 data[256];
} messages[2]; /* the request, the response */

VOR_IPC_HANDLE platform_handle = {100, 0, NULL};

/* Where the stack stood when the operation was called. */
#define WATCH_STACK                                                                                                    \
    {                                                                                                                  \
        const uintptr_t here = (uintptr_t)__builtin_dwarf_cfa();                                                       \
        state.deepest = here < state.deepest ? here : state.deepest;                                                   \
    }

__attribute__((format(printf, 1, 2))) static void note(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length =
        vsnprintf(state.journal + state.written, sizeof state.journal - state.written, format, arguments);
    va_end(arguments);
    state.written += (size_t)length;
}

static int index_of(const VOR_IPC_MSG_REF* message)
{
    return message->data_ptr == &messages[1];
}

void platform_reset(enum fault fault)
{
    memset(&state, 0, sizeof state);
    state.fault = fault;
    state.top = state.deepest = (uintptr_t)__builtin_dwarf_cfa();
}

const char* platform_journal(void)
{
    return state.journal;
}

unsigned platform_stack(void)
{
    return (unsigned)(state.top - state.deepest);
}

vor_int32 vor_ipc_get_buffer(VOR_IPC_MSG_REF* message)
{
    WATCH_STACK
    const int number = state.buffers++;
    note("take %d;", number);
    message->data_ptr = &messages[number];
    return state.fault == (number == 0 ? fault_first_buffer : fault_second_buffer);
}

void vor_ipc_drop_msg_buf(VOR_IPC_MSG_REF* message)
{
    WATCH_STACK
    note("drop %d;", index_of(message));
}

void* vor_ipc_get_meta_data_ptr(VOR_IPC_MSG_REF* message)
{
    WATCH_STACK
    note("meta-data %d;", index_of(message));
    return state.fault == fault_no_meta_data ? NULL : messages[index_of(message)].data;
}

void* vor_ipc_get_payload_ptr(VOR_IPC_MSG_REF* message, vor_uint16 offset)
{
    WATCH_STACK
    const int number = index_of(message);
    note("payload %d+%u;", number, offset);
    if (state.fault == (number == 0 ? fault_no_payload : fault_empty_answer)) {
        return NULL;
    }
    return (vor_uchar*)messages[number].data + offset;
}

vor_int32 vor_ipc_request_response(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id,
                                   VOR_IPC_MSG_REF* request, VOR_IPC_MSG_REF* response, vor_uint16 payload_length,
                                   vor_uint16 zero)
{
    WATCH_STACK
    note("exchange %u from %u to %u 0x%x %d %d, option %u, length %u, %u;", handle == &platform_handle, handle->sap_id,
         sap, message_id, index_of(request), index_of(response), *(vor_uchar*)messages[0].data, payload_length, zero);
    messages[1].header.opcode = message_id;
    messages[1].header.opcode ^= state.fault == fault_other_high_half ? 0x100000 : 0;
    messages[1].header.opcode ^= state.fault == fault_other_low_half ? 1 : 0;
    messages[1].data[0] = state.fault == fault_status ? 5 : 0;
    return state.fault == fault_refused;
}

vor_int32 vor_ipc_send(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id, VOR_IPC_MSG_REF* message,
                       vor_uint16 payload_length, vor_uint16 zero)
{
    WATCH_STACK
    note("send %u to %u 0x%x %d, length %u, %u;", handle == &platform_handle, sap, message_id, index_of(message),
         payload_length, zero);
    return state.fault == fault_refused;
}

vor_int32 vor_tlv_chain_init(TLV_CHAIN* chain)
{
    WATCH_STACK
    note("init;");
    chain->used = 0;
    chain->total_sz = 0;
    return 0;
}

static vor_int32 count(TLV_CHAIN* chain, unsigned size)
{
    chain->used++;
    chain->total_sz = (vor_uint16)(chain->total_sz + size);
    return 0;
}

vor_int32 vor_tlv_chain_add_str(TLV_CHAIN* chain, vor_uint16 tag, char* string)
{
    WATCH_STACK
    note("%u '%s';", tag, string);
    return count(chain, (unsigned)strlen(string));
}

vor_int32 vor_tlv_chain_add_vor_int16(TLV_CHAIN* chain, vor_uint16 tag, vor_int16 value)
{
    WATCH_STACK
    note("%u i16 %d;", tag, value);
    return count(chain, 2);
}

vor_int32 vor_tlv_chain_add_vor_int32(TLV_CHAIN* chain, vor_uint16 tag, vor_int32 value)
{
    WATCH_STACK
    note("%u i32 %d;", tag, value);
    return count(chain, 4);
}

vor_int32 vor_tlv_chain_add_raw(TLV_CHAIN* chain, vor_uint16 tag, vor_uint16 length, unsigned char* bytes)
{
    WATCH_STACK
    note("%u %u bytes from %u;", tag, length, *bytes);
    return count(chain, length);
}

vor_int32 vor_tlv_chain_serialize(TLV_CHAIN* chain, unsigned char* destination, vor_int32* size)
{
    WATCH_STACK
    note("serialize %u at %d;", chain->used,
         destination == NULL ? -1 : (int)(destination - (vor_uchar*)messages[0].data));
    *size = chain->total_sz;
    return 0;
}

vor_int32 vor_tlv_chain_free(TLV_CHAIN* chain, vor_uchar flag)
{
    WATCH_STACK
    note("free %u %u;", chain->used, flag);
    return 0;
}

/* Named by the library's text converters, which no measured call reaches. */
vor_int32 vor_atoi(const vor_char* string)
{
    return *string;
}

vor_uint32 vor_htobe32(vor_uint32 value)
{
    return __builtin_bswap32(value);
}
