// The request engine: how every configuration call is sent and its answer read.
//
// A family names its Frame once: the manager's SAP and its policies. A call is
// then one line, its elements in the order of the wire, the tag beside its
// argument:
//
//     return request<can, 0x13003>(int16<1>(port_num), int32<6>(can_id), int16<10>(option));
//
// The line compiles to a constant description and one variadic call; nothing
// of the exchange is instantiated per call. A call with a behaviour of its own
// is written out from the steps of an Exchange.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <type_traits>

#include "elements.hpp"

#pragma GCC visibility push(hidden)

namespace device_mgmt {

// --- Return codes ---------------------------------------------------------

constexpr vor_int32 ok = 0;
constexpr vor_int32 no_endpoint = -1;
constexpr vor_int32 refused = -1;     // the manager's status is in vor_errno
constexpr vor_int32 undelivered = -3; // the platform refused
constexpr vor_int32 no_status = -4;   // no buffer, no place in it, or no status in the answer

// --- Descriptions ---------------------------------------------------------

// What is constant about a message, in one array: the head, then a slot for each element.
struct Slot {
    vor_uchar tag;
    Kind kind;
};

struct Head {
    MessageId id;
    Frame frame;
    vor_uint32 record_length; // the bytes sent, also where the record is longer; 0 for a TLV chain
};

constexpr std::size_t head_slots = sizeof(Head) / sizeof(Slot);

template <std::size_t count>
struct alignas(Head) Description {
    Slot slots[head_slots + count];
};

template <std::size_t count>
consteval Description<count> joined(Head head, const Slot (&slots)[count])
{
    Description<count> description{};
    const auto front = std::bit_cast<std::array<Slot, head_slots>>(head);
    std::copy_n(slots, count, std::copy_n(front.begin(), head_slots, description.slots));
    return description;
}

template <class Element, Policy place>
constexpr bool leads_at = std::is_same_v<Element, LeadingByte<place>>;
template <class Leading, bool record>
constexpr bool belongs = true;
template <Kind kind, vor_uchar tag, bool in_record, bool record>
constexpr bool belongs<Element<kind, tag, in_record>, record> = in_record == record;

template <Frame frame, bool record, class... Elements>
consteval bool fits()
{
    static_assert((leads_at<Elements, option_byte> || ...) == frame.has(option_byte),
                  "an option goes with a frame that has its byte, and the frame with an option");
    static_assert((leads_at<Elements, flag_byte> || ...) == frame.has(flag_byte),
                  "a flag goes with a frame that has its byte, and the frame with a flag");
    static_assert((belongs<Elements, record> && ...), "a record holds fields, a chain elements");
    static_assert(!record || frame.has_any(null_payload_keeps, null_payload_drops),
                  "a record is written only where its frame asks for a place");
    return coherent<frame>();
}

// `static`, not `inline`: a weak constant would be reached through the GOT on ARM.
template <Frame frame, MessageId id, vor_uint16 record_length, class... Elements>
static constexpr auto description = joined(Head{id, frame, record_length},
                                           {Slot{Elements::tag, Elements::kind}..., Slot{0, Kind::end}});

template <Frame frame, MessageId id, vor_uint16 record_length, Policy place, class... Elements>
static constexpr const auto& description<frame, id, record_length, LeadingByte<place>, Elements...> =
    description<frame, id, record_length, Elements...>;

template <Frame frame, MessageId id, vor_uint16 record_length, class... Elements>
constexpr const Slot* describe()
{
    static_assert(fits<frame, record_length != 0, Elements...>());
    return description<frame, id, record_length, Elements...>.slots;
}

// --- The steps ------------------------------------------------------------

// One message under way, and its answer. A step returns 0 to continue, else the code to return.
struct Exchange : Head {
    VOR_IPC_HANDLE* handle;
    VOR_IPC_MSG_REF request;
    VOR_IPC_MSG_REF response;
    vor_uchar* payload; // where it is written
    vor_uint16 length;
    vor_uchar byte; // of a byte element, until the chain is serialized

    // Endpoint and buffers, the response's only where the frame awaits one.
    template <Frame frame_, MessageId id_>
    [[gnu::always_inline]] vor_int32 take_buffers()
    {
        static_assert(coherent<frame_>());
        constexpr Head head{id_, frame_, 0};
        id = head.id;
        frame = head.frame;
        return take_buffers();
    }

    // The same, and the payload written.
    template <Frame frame_, MessageId id_, vor_uint16 record_length = 0, class... Elements>
    [[gnu::always_inline]] vor_int32 prepare(Elements... elements)
    {
        return prepare_described(describe<frame_, id_, record_length, Elements...>(), elements.value...);
    }

    // Writes a chain as the payload and frees it.
    void serialize(TLV_CHAIN& chain);

    vor_int32 send();             // one-way; releases what the frame says
    vor_int32 send_and_receive(); // releases the buffers when it is refused

    bool answer_matches() const;
    // The answer's status, null for an answer without one. Not 0 where such an answer ends the call.
    vor_int32 read_status(const void*& status);
    // The status as a code, a refusal's in vor_errno; releases the request, in the frame's order.
    vor_int32 evaluate(const void* status);

    vor_int32 finish(const void* status); // evaluates it and releases the response
    vor_int32 finish();                   // with the answer's status
    vor_int32 send_and_finish();          // one-way or answered, as the frame says

    void drop_buffers();

    // The values after a description come in the order of its slots.
    vor_int32 prepare_described_v(const Slot* description, va_list values);

private:
    vor_int32 take_buffers();
    vor_int32 prepare_described(const Slot* description, ...);
};

// Whole calls from a description: any, and the chain that is answered.
vor_int32 send_message(const Slot* description, ...);
vor_int32 request_chain(const Slot* description, ...);
void* request_statistics(const Slot* description, ...);

inline vor_uchar* payload_of(VOR_IPC_MSG_REF& message, vor_uint16 offset = 0)
{
    return static_cast<vor_uchar*>(vor_ipc_get_payload_ptr(&message, offset));
}

inline vor_int32 status_at(const void* payload)
{
    vor_int32 status; // read without assuming alignment
    __builtin_memcpy(&status, payload, sizeof status);
    return status;
}

inline bool accepted(const void* status)
{
    return status != nullptr && status_at(status) == 0;
}

// Texts are read when their step is reached; a null one is 0.
vor_ip_address address_in(vor_char* text);
vor_uint16 number_in(const vor_char* text);

// --- What families write --------------------------------------------------

template <Frame frame, MessageId id, vor_uint16 record_length = 0, class... Elements>
[[gnu::always_inline]] inline vor_int32 request(Elements... elements)
{
    constexpr const Slot* slots = describe<frame, id, record_length, Elements...>();
    if constexpr (record_length == 0 && !frame.has_any(one_way, two_buffer_send)) {
        return request_chain(slots, elements.value...);
    } else {
        return send_message(slots, elements.value...);
    }
}

// The counters of a port, in a buffer already released; null for every failure.
template <class Record, Frame frame, MessageId id, vor_uint16 record_length, class... Elements>
[[gnu::always_inline]] inline Record* statistics(Elements... elements)
{
    return static_cast<Record*>(
        request_statistics(describe<frame, id, record_length, Elements...>(), elements.value...));
}

} // namespace device_mgmt

#pragma GCC visibility pop
