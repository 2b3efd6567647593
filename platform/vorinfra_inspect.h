/*
 * vorinfra_inspect.h: the development platform's state, for tests and tools.
 */
#ifndef VORINFRA_INSPECT_H
#define VORINFRA_INSPECT_H

#include <vorinfra.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What vor_ipc_request_response and vor_ipc_send return besides 0. */
enum {
    VORINFRA_NOT_SENT = -1, /* refused; a request also if nobody serves its SAP; with errno EBUSY,
                             * another thread or process has the endpoint */
    VORINFRA_NO_ANSWER = -2 /* sent; whether it was handled is unknown */
};

/* The message buffers this process now holds. */
unsigned vorinfra_buffers_taken(void);

/* The one-way messages of this process that nobody was there to receive:
 * vor_ipc_send returned 0, and they are gone. */
unsigned vorinfra_messages_undelivered(void);

typedef struct vorinfra_timer {
    VOR_TIMER_CALLBACK callback;
    void* context;
    vor_uint32 milliseconds; /* as last started */
    vor_boolean started;
    vor_boolean fired; /* only ever with VORINFRA_TIMERS=run */
} VORINFRA_TIMER;

/* Copies the timers of this process, oldest first, as far as there is room.
 * Returns how many there are. */
unsigned vorinfra_timers(VORINFRA_TIMER* copies, unsigned room);

#ifdef __cplusplus
}
#endif

#endif
