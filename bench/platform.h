/*
 * platform.h: a platform that sends nothing. It writes down every operation,
 * answers as it is told, and watches how deep the stack goes.
 */
#ifndef BENCH_PLATFORM_H
#define BENCH_PLATFORM_H

#include <vorinfra.h>

enum fault {
    fault_none,
    fault_first_buffer,
    fault_second_buffer,
    fault_no_meta_data,
    fault_no_payload,
    fault_refused,
    fault_other_high_half,
    fault_other_low_half,
    fault_empty_answer,
    fault_status,
    fault_count
};

extern VOR_IPC_HANDLE platform_handle;

void platform_reset(enum fault fault);
const char* platform_journal(void); /* the operations since the reset, as text */
unsigned platform_stack(void);      /* the deepest stack below the caller of platform_reset, in bytes */

#endif
