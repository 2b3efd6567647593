/* types.h: the scalars, return codes and macros that every header shares. */
#ifndef DEVICE_MGMT_TYPES_H
#define DEVICE_MGMT_TYPES_H

#include <stddef.h>
#include <stdint.h>

/* clang-format off */
#ifdef __cplusplus
#define VOR_DECLARATIONS_BEGIN extern "C" { _Pragma("GCC visibility push(default)")
#define VOR_DECLARATIONS_END _Pragma("GCC visibility pop") }
#define VOR_LAYOUT(condition) static_assert(condition, "a record's layout is the wire's: " #condition)
#else
#define VOR_DECLARATIONS_BEGIN _Pragma("GCC visibility push(default)")
#define VOR_DECLARATIONS_END _Pragma("GCC visibility pop")
#define VOR_LAYOUT(condition) _Static_assert(condition, "a record's layout is the wire's: " #condition)
#endif
/* clang-format on */

typedef uint8_t vor_uchar;
typedef char vor_char;
typedef uint8_t vor_boolean; /* 0 false, 1 true */
typedef uint8_t vor_bool;
typedef int16_t vor_int16;
typedef uint16_t vor_uint16;
typedef int32_t vor_int32;
typedef uint32_t vor_uint32;
typedef uint64_t vor_uint64;
typedef uint32_t vor_ip_address; /* IPv4, network byte order */

/*
 * What the calls return. A family's header names a code only where it means
 * something else there.
 *
 *   0      success: the manager accepted, or a one-way message was handed over
 *  -1      no endpoint is bound, or the manager refused; its status is then
 *          in vor_errno
 *  -3      the platform refused the exchange or the send
 *  -4      no message buffer, no room in one, or an answer without a status
 *  -1001   latitude not accepted
 *  -1002   longitude not accepted
 *  -1151   more than four DNS servers
 *  -1500   a MAC address text that is not hexadecimal
 */

VOR_DECLARATIONS_BEGIN

/* The last non-zero status a manager answered. A success leaves it alone; most
 * families set it to 0 when a call begins, and the headers say which do not. */
extern vor_int32 vor_errno;

VOR_DECLARATIONS_END

#endif
