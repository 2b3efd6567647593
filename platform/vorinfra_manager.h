/*
 * vorinfra_manager.h: the manager's side of the development platform.
 *
 * A manager binds its SAP with vor_ipc_bind, waits on the descriptor, receives
 * one message at a time and answers those that await an answer. Nothing here
 * is called by the configuration library.
 */
#ifndef VORINFRA_MANAGER_H
#define VORINFRA_MANAGER_H

#include <vorinfra.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VORINFRA_DATA_MAX 4096 /* meta-data and payload of one message, together */

/* The type of an element's value. */
typedef enum vorinfra_kind {
    VORINFRA_INT16 = 1,
    VORINFRA_INT32 = 2,
    VORINFRA_STRING = 3,
    VORINFRA_RAW = 4
} vorinfra_kind;

/* One received message. Everything points into the message itself. */
typedef struct vorinfra_message {
    vor_uint16 source; /* the sender's SAP; the answer goes back there */
    vor_uint16 destination;
    vor_uint32 id;
    vor_uint16 sequence;       /* ties an answer to its request */
    vor_boolean answer_wanted; /* 0 for a one-way message */
    const vor_uchar* meta_data;
    vor_uint16 meta_data_size;
    const vor_uchar* payload;
    vor_uint16 payload_size;
    vor_uchar data[VORINFRA_DATA_MAX];
} VORINFRA_MESSAGE;

/* One element of a serialized chain. A string's size leaves out its terminator;
 * numbers are in `number`, sign-extended. */
typedef struct vorinfra_element {
    vor_uint16 tag;
    vorinfra_kind kind;
    vor_uint16 size;
    const vor_uchar* value;
    vor_int32 number;
} VORINFRA_ELEMENT;

/* The descriptor to poll for reading; -1 for a null handle. A manager that
 * receives from it by itself and asks for control data must close the
 * descriptors that come with a message. */
int vorinfra_descriptor(const VOR_IPC_HANDLE* handle);

/* 1: a message was received; 0: none is waiting; -1: a datagram that is not a
 * message was dropped, or the SAP belongs to the process that forked this one
 * (either is reported on standard error). Does not block, except once for up to
 * a second after a fork, until that process has ended. */
int vorinfra_receive(VOR_IPC_HANDLE* handle, VORINFRA_MESSAGE* message);

/* The same, but waits for a message for up to VORINFRA_TIMEOUT_MS. */
int vorinfra_await(VOR_IPC_HANDLE* handle, VORINFRA_MESSAGE* message);

/* Answers `request` with a message of the given id (usually the request's own).
 * 0: sent; -1: the client is gone or does not receive. Never blocks. */
int vorinfra_answer(VOR_IPC_HANDLE* handle, const VORINFRA_MESSAGE* request, vor_uint32 id, const void* payload,
                    vor_uint16 size);

/* Lets `request` fail at its client at once, as if nobody served the SAP.
 * 0: sent; -1: the client is gone, or awaits no answer. Never blocks. */
int vorinfra_refuse(VOR_IPC_HANDLE* handle, const VORINFRA_MESSAGE* request);

/* Reads the element at *cursor and moves it on. 1: read; 0: the end; -1: the
 * bytes are not a chain. Start with cursor 0. */
int vorinfra_next_element(const vor_uchar* chain, vor_uint16 size, vor_uint16* cursor, VORINFRA_ELEMENT* element);

/* The private directory of this gateway's sockets, created when missing.
 * Null with a message on standard error when it cannot be used. */
const char* vorinfra_directory(void);

/* `path` under VORINFRA_ROOT, in `buffer`. 0; -1 with a message on standard
 * error when it does not fit or others could change where it leads. */
int vorinfra_rooted_path(const char* path, char* buffer, unsigned size);

/* ---- A program between clients and a manager of another gateway ---- */

/* Binds the first free SAP from `first` to `last` in that gateway's private
 * directory, whose path must be as safe as that of one's own. Null with a
 * message on standard error. */
VOR_IPC_HANDLE* vorinfra_bind_in(const char* directory, vor_uint16 first, vor_uint16 last);

/* How long a send or an answer there may take, in milliseconds. */
int vorinfra_timeout(const VOR_IPC_HANDLE* handle);

/* Sends a received message on to its destination, as it is, except that it comes
 * from this SAP. The sequence, 1 to 32767, ties the answer to it; 0: one-way.
 * 0: sent; -1 with errno ENOENT or ECONNREFUSED: nobody serves the SAP; EAGAIN:
 * the manager has no room for it. Never blocks. */
int vorinfra_forward(VOR_IPC_HANDLE* handle, const VORINFRA_MESSAGE* message, vor_uint16 sequence);

/* 1: an answer was received; 2: a manager refused the request; 0: none is
 * waiting; -1: something else was dropped, with a message on standard error.
 * `sequence` is that of the request. Never blocks. */
int vorinfra_receive_answer(VOR_IPC_HANDLE* handle, VORINFRA_MESSAGE* message);

/* Whether somebody serves the SAP in the directory of the handle. */
int vorinfra_is_served(const VOR_IPC_HANDLE* handle, vor_uint16 sap);

#ifdef __cplusplus
}
#endif

#endif
