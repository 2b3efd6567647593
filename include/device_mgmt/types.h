/**
 * @file
 * types.h: the scalars, return codes and macros that every header shares.
 */
#ifndef DEVICE_MGMT_TYPES_H
#define DEVICE_MGMT_TYPES_H
/* SPDX-License-Identifier: MIT */

#include <stddef.h>
#include <stdint.h>

/* clang-format off */
#ifdef __cplusplus
#if __cplusplus < 201103L
#error "device_mgmt needs C++11 (-std=c++11), or C"
#define VOR_LAYOUT(condition) typedef vor_int32 vor_unchecked
#else
#define VOR_LAYOUT(condition) static_assert(condition, "programs and managers rely on it: " #condition)
#endif
#define VOR_DECLARATIONS_BEGIN extern "C" { _Pragma("GCC visibility push(default)")
#define VOR_DECLARATIONS_END _Pragma("GCC visibility pop") }
#else
#define VOR_DECLARATIONS_BEGIN _Pragma("GCC visibility push(default)")
#define VOR_DECLARATIONS_END _Pragma("GCC visibility pop")
#define VOR_LAYOUT(condition) _Static_assert(condition, "programs and managers rely on it: " #condition)
#endif
/* clang-format on */

/* Records are sent as they lie in memory. */
#if !defined(__BYTE_ORDER__) || __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "device_mgmt: this processor is not little-endian, and the records that the managers read are"
#endif
#ifndef __cplusplus
_Static_assert(_Alignof(uint64_t) == 8, "device_mgmt: 64-bit numbers are not aligned to 8 bytes here, and in the "
                                        "records that the managers send they are (i386 is such a target)");
#elif __cplusplus >= 201103L
static_assert(alignof(uint64_t) == 8, "device_mgmt: 64-bit numbers are not aligned to 8 bytes here, and in the "
                                      "records that the managers send they are (i386 is such a target)");
#endif

typedef uint8_t vor_uchar;
typedef char vor_char;
typedef uint8_t vor_boolean; /* 0 false, 1 true, where a call says no more of it */
typedef uint8_t vor_bool;
typedef int16_t vor_int16;
typedef uint16_t vor_uint16;
typedef int32_t vor_int32;
typedef uint32_t vor_uint32;
typedef uint64_t vor_uint64;
typedef uint32_t vor_ip_address; /* IPv4, network byte order */

/**
 * What the calls return, by name. A call's own text says where a code means something else. device_mgmt/code_text.h has
 * a sentence for each.
 */
typedef enum vor_code {
    VOR_CODE_DONE = 0,                 /**< the manager accepted, or a one-way message was sent */
    VOR_CODE_REFUSED = -1,             /**< the manager refused (its status is in vor_errno), or no endpoint is bound */
    VOR_CODE_UNDELIVERED = -3,         /**< not sent, or not answered in time: the change may have been made */
    VOR_CODE_UNREADABLE = -4,          /**< no buffer, or no status in the answer: the change may have been made */
    VOR_CODE_LATITUDE = -1001,         /**< latitude not accepted */
    VOR_CODE_LONGITUDE = -1002,        /**< longitude not accepted */
    VOR_CODE_TOO_MANY_SERVERS = -1151, /**< more than four DNS servers */
    VOR_CODE_MAC_ADDRESS = -1500       /**< a MAC address text that is not hexadecimal */
} vor_code;
VOR_LAYOUT(VOR_CODE_DONE == 0);
VOR_LAYOUT(VOR_CODE_REFUSED == -1);
VOR_LAYOUT(VOR_CODE_UNDELIVERED == -3);
VOR_LAYOUT(VOR_CODE_UNREADABLE == -4);
VOR_LAYOUT(VOR_CODE_LATITUDE == -1001);
VOR_LAYOUT(VOR_CODE_LONGITUDE == -1002);
VOR_LAYOUT(VOR_CODE_TOO_MANY_SERVERS == -1151);
VOR_LAYOUT(VOR_CODE_MAC_ADDRESS == -1500);

VOR_DECLARATIONS_BEGIN

/* The last non-zero status a manager answered. A success leaves it alone; most
 * families set it to 0 when a call begins, and the headers say which do not. */
extern vor_int32 vor_errno;

VOR_DECLARATIONS_END

#endif
