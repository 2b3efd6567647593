// What the messages of a family have in common, and where they differ.
#pragma once

#include <vorinfra.h>

namespace device_mgmt {

enum class Policy : vor_uint16 {
    clears_errno = 1 << 0,           // vor_errno is 0 from the start, however the call ends
    lone_request_dropped = 1 << 1,   // no response buffer: the request is given back, else it stays taken
    option_byte = 1 << 2,            // the first argument is the meta-data byte
    flag_byte = 1 << 3,              // the first argument leads the payload; the call counts it in
    null_payload_keeps = 1 << 4,     // no place to write: -4, what was taken stays taken
    null_payload_drops = 1 << 5,     // no place to write: -4, what was taken is given back
    one_way = 1 << 6,                // sent, never answered
    sent_buffer_kept = 1 << 7,       // once sent, the buffer is the platform's
    two_buffer_send = 1 << 8,        // sent with both buffers taken, result as it is, nothing given back
    refused_keeps_response = 1 << 9, // a refused exchange gives back the request only
    request_dropped_first = 1 << 10, // given back before the answer is read
    request_dropped_last = 1 << 11,  // given back after a refusal's status is in vor_errno
    id_low_half = 1 << 12,           // answers are known by the low 16 bits of their id
    empty_answer_keeps = 1 << 13,    // the right answer without a status: -4, buffers stay taken
};
using enum Policy;

// The manager's SAP and the policies. A family names its frame once: sap(19) | clears_errno
struct Frame {
    vor_uint16 sap;
    vor_uint16 policies;

    template <class... Policies>
    constexpr bool has_any(Policies... wanted) const
    {
        return (policies & (static_cast<vor_uint16>(wanted) | ...)) != 0;
    }
    constexpr bool has(Policy wanted) const { return has_any(wanted); }
};

consteval Frame sap(vor_uint16 number)
{
    return {number, 0};
}

consteval Frame operator|(Frame frame, Policy policy)
{
    return {frame.sap, static_cast<vor_uint16>(frame.policies | static_cast<vor_uint16>(policy))};
}

struct MessageId {
    vor_uint32 number;

    MessageId() = default;
    consteval MessageId(vor_uint32 number_) : number(number_) {} // from any number, but not from a frame
};

template <Frame frame>
consteval bool coherent()
{
    constexpr bool answered = !frame.has_any(one_way, two_buffer_send);
    static_assert(!(frame.has(null_payload_keeps) && frame.has(null_payload_drops)),
                  "with no place to write, buffers are kept or given back, not both");
    static_assert(!(frame.has(option_byte) && frame.has(flag_byte)),
                  "the first argument is the option byte or the flag byte, not both");
    static_assert(!(frame.has(request_dropped_first) && frame.has(request_dropped_last)),
                  "the request is given back first or last, not both");
    static_assert(!(frame.has(one_way) && frame.has_any(two_buffer_send, lone_request_dropped)),
                  "a one-way message takes one buffer");
    static_assert(answered || !frame.has_any(refused_keeps_response, request_dropped_first, request_dropped_last,
                                             id_low_half, empty_answer_keeps),
                  "a message that is never answered has no policy for its answer");
    static_assert(frame.has(one_way) || !frame.has(sent_buffer_kept),
                  "only a one-way message's buffer is kept once sent");
    return true;
}

} // namespace device_mgmt
