/**
 * @file
 * vorinfra.h: the platform library as this library calls it.
 *
 * Declarations only. On the gateway the platform provides these functions; on
 * a development machine platform/ does. "Result ignored" means that the library
 * ignores the result, whatever the function returns.
 */
#ifndef VORINFRA_H
#define VORINFRA_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* --- TLV chains ------------------------------------------------------- */

#define TLV_CHAIN_CAPACITY 50

typedef struct _tlv_ {
    vor_uint16 type; /* the tag by which the receiver identifies the field */
    vor_uchar* data;
    vor_uint16 size;
} TLV;
VOR_LAYOUT(sizeof(TLV) == 3 * sizeof(void*));
VOR_LAYOUT(offsetof(TLV, type) == 0);
VOR_LAYOUT(offsetof(TLV, data) == sizeof(void*));
VOR_LAYOUT(offsetof(TLV, size) == 2 * sizeof(void*));

typedef struct _tlv_chain_ {
    TLV object[TLV_CHAIN_CAPACITY];
    vor_uint16 used;
    vor_uint16 total_sz; /* running size of the serialized chain */
} TLV_CHAIN;
VOR_LAYOUT(sizeof(TLV_CHAIN) == 151 * sizeof(void*));
VOR_LAYOUT(offsetof(TLV_CHAIN, object) == 0);
VOR_LAYOUT(offsetof(TLV_CHAIN, used) == 150 * sizeof(void*));
VOR_LAYOUT(offsetof(TLV_CHAIN, total_sz) == 150 * sizeof(void*) + 2);

/* All results ignored. The strings and bytes added must remain valid until the
 * chain is serialized. */
vor_int32 vor_tlv_chain_init(TLV_CHAIN* chain);
vor_int32 vor_tlv_chain_add_str(TLV_CHAIN* chain, vor_uint16 tag, char* string);
vor_int32 vor_tlv_chain_add_vor_int16(TLV_CHAIN* chain, vor_uint16 tag, vor_int16 value);
vor_int32 vor_tlv_chain_add_vor_int32(TLV_CHAIN* chain, vor_uint16 tag, vor_int32 value);
vor_int32 vor_tlv_chain_add_raw(TLV_CHAIN* chain, vor_uint16 tag, vor_uint16 length, unsigned char* bytes);
/* Writes the elements in the order added and stores the bytes written. */
vor_int32 vor_tlv_chain_serialize(TLV_CHAIN* chain, unsigned char* destination, vor_int32* size);
vor_int32 vor_tlv_chain_free(TLV_CHAIN* chain, vor_uchar flag);

/* --- Messages --------------------------------------------------------- */

typedef struct _vor_ipc_handle_ {
    vor_uint16 sap_id; /* the SAP this process is bound to */
    vor_uint32 bind_option;
    void* context; /* for the platform */
} VOR_IPC_HANDLE;
VOR_LAYOUT(sizeof(VOR_IPC_HANDLE) == sizeof(void*) + 8);
VOR_LAYOUT(offsetof(VOR_IPC_HANDLE, sap_id) == 0);
VOR_LAYOUT(offsetof(VOR_IPC_HANDLE, bind_option) == 4);
VOR_LAYOUT(offsetof(VOR_IPC_HANDLE, context) == 8);

typedef struct _vor_ipc_msg_ref_ {
    void* data_ptr; /* the message, beginning with its header */
    vor_uint16 size;
    vor_uint16 meta_data_sz;
    vor_uint16 payload_sz;
} VOR_IPC_MSG_REF;
VOR_LAYOUT(sizeof(VOR_IPC_MSG_REF) == sizeof(void*) + 8);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_REF, data_ptr) == 0);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_REF, size) == sizeof(void*));
VOR_LAYOUT(offsetof(VOR_IPC_MSG_REF, meta_data_sz) == sizeof(void*) + 2);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_REF, payload_sz) == sizeof(void*) + 4);

/* The 16 bytes at the start of every message; meta-data and payload follow. */
typedef struct _vor_ipc_msg_hdr_ {
    vor_uint16 ipc_src_id;
    vor_uint16 ipc_dest_id;
    vor_uint32 opcode; /* the message id */
    vor_uint16 flag;
    vor_uint16 payload_sz;
    vor_uint16 meta_data_sz;
} VOR_IPC_MSG_HDR;
VOR_LAYOUT(sizeof(VOR_IPC_MSG_HDR) == 16);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_HDR, ipc_src_id) == 0);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_HDR, ipc_dest_id) == 2);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_HDR, opcode) == 4);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_HDR, flag) == 8);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_HDR, payload_sz) == 10);
VOR_LAYOUT(offsetof(VOR_IPC_MSG_HDR, meta_data_sz) == 12);

VOR_IPC_HANDLE* vor_ipc_bind(vor_uint16 sap, vor_uint16 bind_option); /* null: not bound */
vor_bool vor_ipc_unbind(VOR_IPC_HANDLE* handle);

/* 0: a buffer was taken and the reference filled. */
vor_int32 vor_ipc_get_buffer(VOR_IPC_MSG_REF* message);
void* vor_ipc_get_meta_data_ptr(VOR_IPC_MSG_REF* message);
/* The address `offset` bytes into the data after the header. A request with
 * the one-byte meta-data area asks for 1, every other for 0. */
void* vor_ipc_get_payload_ptr(VOR_IPC_MSG_REF* message, vor_uint16 offset);
void vor_ipc_drop_msg_buf(VOR_IPC_MSG_REF* message);

/* 0: an answer is in the response buffer. The length counts the payload only,
 * never the meta-data byte. */
vor_int32 vor_ipc_request_response(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id,
                                   VOR_IPC_MSG_REF* request, VOR_IPC_MSG_REF* response, vor_uint16 payload_length,
                                   vor_uint16 zero);
/* 0: sent, whether or not anybody serves the SAP; no answer follows. */
vor_int32 vor_ipc_send(VOR_IPC_HANDLE* handle, vor_uint16 sap, vor_uint32 message_id, VOR_IPC_MSG_REF* message,
                       vor_uint16 payload_length, vor_uint16 zero);
vor_int32 vor_ipc_debug(VOR_IPC_HANDLE* handle, vor_uint16 module_number); /* result ignored */

/* --- Sockets ---------------------------------------------------------- */

typedef struct _vor_unix_socket_ {
    vor_int32 sock_fd;
    vor_uint16 sock_domain;
    vor_uint16 sock_type;
    vor_char* sock_path;
} VOR_UNIX_SOCKET;
VOR_LAYOUT(sizeof(VOR_UNIX_SOCKET) == sizeof(void*) + 8);
VOR_LAYOUT(offsetof(VOR_UNIX_SOCKET, sock_fd) == 0);
VOR_LAYOUT(offsetof(VOR_UNIX_SOCKET, sock_domain) == 4);
VOR_LAYOUT(offsetof(VOR_UNIX_SOCKET, sock_type) == 6);
VOR_LAYOUT(offsetof(VOR_UNIX_SOCKET, sock_path) == 8);

void* vor_socket_create(vor_uchar domain, vor_uchar type, vor_uchar protocol); /* a VOR_UNIX_SOCKET, or null */
vor_int32 vor_socket_config_unix(void* socket, vor_char* path);                /* -1: failed */
vor_int32 vor_socket_connect(void* socket, vor_uchar option);                  /* -1: failed */
vor_int32 vor_socket_close(void* socket, vor_uchar option);
vor_int32 vor_send(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags);
vor_int32 vor_recv(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags);

/* --- Timers, log ------------------------------------------------------ */

typedef void (*VOR_TIMER_CALLBACK)(void);

typedef struct _vor_timer_handle_ {
    VOR_TIMER_CALLBACK timer_func_callback;
    void* context;
} VOR_TIMER_HANDLE;
VOR_LAYOUT(sizeof(VOR_TIMER_HANDLE) == 2 * sizeof(void*));
VOR_LAYOUT(offsetof(VOR_TIMER_HANDLE, timer_func_callback) == 0);
VOR_LAYOUT(offsetof(VOR_TIMER_HANDLE, context) == sizeof(void*));

VOR_TIMER_HANDLE* vor_timer_create(vor_uint32 option, void* context, VOR_TIMER_CALLBACK callback);
vor_int32 vor_timer_start(VOR_TIMER_HANDLE* timer, vor_uint32 milliseconds, vor_uint32 option);

void vor_dbg_log(vor_uint16 level_mask, const char* format, ...) __attribute__((format(printf, 2, 3)));

/* --- Wrappers of the system library ----------------------------------- */

void* vor_malloc(vor_uint32 size);
void vor_free(void* memory);
void* vor_realloc(void* memory, vor_uint32 size);
void* vor_memcpy(void* destination, const void* source, vor_uint32 size);
void* vor_memset(void* memory, vor_int32 value, vor_uint32 size);
vor_char* vor_strcpy(vor_char* destination, const vor_char* source);
vor_int32 vor_strcmp(const vor_char* left, const vor_char* right);
vor_int32 vor_strlen(const vor_char* string);
vor_int32 vor_atoi(const vor_char* string);
vor_uint32 vor_htobe32(vor_uint32 value);

VOR_DECLARATIONS_END

#endif
