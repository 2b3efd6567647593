/**
 * @file
 * code_text.h: the return codes as sentences. Inline: nothing is added to the library. Strict C89 has no inline.
 */
#ifndef DEVICE_MGMT_CODE_TEXT_H
#define DEVICE_MGMT_CODE_TEXT_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

/**
 * Say what a code means, for a log or a user. For the calls that set or ask; those that bind or unbind return what
 * their comments say.
 *
 * @param code    what a call returned
 * @param status  vor_errno after the call; set it to 0 before, not every call does
 * @return a text that is never released: one line in lower case, without the status
 */
static inline const char* device_mgmt_code_text(vor_int32 code, vor_int32 status)
{
    switch (code) {
    case VOR_CODE_DONE:
        return "accepted, or sent one-way: then no verdict will come";
    case VOR_CODE_REFUSED:
        return status != 0 ? "refused by the manager: its status is in vor_errno"
                           : "not sent: no endpoint; or any failure of a call that has only this code: it may have "
                             "been applied";
    case VOR_CODE_UNDELIVERED:
        return "not delivered, or no answer in time: it may have been applied";
    case VOR_CODE_UNREADABLE:
        return "not sent: no message buffer; or no answer that the call reads: it may have been applied";
    case VOR_CODE_LATITUDE:
        return "refused by the manager: latitude not accepted";
    case VOR_CODE_LONGITUDE:
        return "refused by the manager: longitude not accepted";
    case VOR_CODE_TOO_MANY_SERVERS:
        return "rejected by the call: more than four DNS servers";
    case VOR_CODE_MAC_ADDRESS:
        return "rejected by the call: not a MAC address";
    default:
        return "not sent: the platform's own code";
    }
}

#endif
