// The request engine: how every configuration call is sent and its answer judged.
//
// A family names its Frame once: the manager's SAP and one bit per policy. A
// call is then one line, its elements in the order of the wire, the tag beside
// its argument:
//
//     return request<can, 0x13003>(int16<1>(port_num), int32<6>(can_id), int16<10>(option));
//
// The line compiles to a constant description and one variadic call; nothing
// of the exchange is instantiated per call. A call with a behaviour of its own
// is written out from the same steps: prepare, exchange, look, settle.
#pragma once

#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <vorinfra.h>

#pragma GCC visibility push(hidden)

// --- Frames ---------------------------------------------------------------

using Frame = vor_uint32; // the SAP in the low half, policies above

constexpr Frame sap(vor_uint16 number)
{
    return number;
}

constexpr Frame clears_errno = 1u << 16;           // vor_errno is 0 from the start, however the call ends
constexpr Frame lone_request_dropped = 1u << 17;   // no response buffer: the request is given back, else it stays taken
constexpr Frame option_byte = 1u << 18;            // the first argument is the meta-data byte
constexpr Frame flag_byte = 1u << 19;              // the first argument leads the payload; the call counts it in
constexpr Frame null_payload_keeps = 1u << 20;     // no place to write: -4, what was taken stays taken
constexpr Frame null_payload_drops = 1u << 21;     // no place to write: -4, what was taken is given back
constexpr Frame one_way = 1u << 22;                // sent, never answered
constexpr Frame sent_buffer_kept = 1u << 23;       // once sent, the buffer is the platform's
constexpr Frame two_buffer_send = 1u << 24;        // sent with both buffers taken, result as it is, nothing given back
constexpr Frame refused_keeps_response = 1u << 25; // a refused exchange gives back the request only
constexpr Frame request_dropped_first = 1u << 26;  // given back before the answer is looked at
constexpr Frame id_low_half = 1u << 27;            // answers are known by the low 16 bits of their id
constexpr Frame empty_answer_keeps = 1u << 28;     // the right answer without a status: -4, buffers stay taken
constexpr Frame request_dropped_last = 1u << 29;   // given back after a refusal's status is in vor_errno

// --- Return codes ---------------------------------------------------------

constexpr vor_int32 ok = 0;
constexpr vor_int32 no_endpoint = -1;
constexpr vor_int32 refused = -1;     // the manager's status is in vor_errno
constexpr vor_int32 undelivered = -3; // the platform refused
constexpr vor_int32 no_status = -4;   // no buffer, no place in it, or no status in the answer

// --- Elements -------------------------------------------------------------

enum class Kind : vor_uchar {
    int16,
    int32,
    string,
    byte,
    address, // a dotted quad; what does not parse, or is no text at all, is sent as 0
    number,  // 16 bits of a number in a text; no text at all is 0
    strings, // every further argument of the call, under one tag
    addresses,
    end, // of the elements
};

// An element's value on its way to the engine: a number or a pointer.
using Argument = std::intptr_t;

// The arguments behind a call's dots. A copy reads on from where it was made.
struct Arguments {
    vor_int32 count;
    va_list list;
};

template <Kind kind_, vor_uchar tag_, bool in_record_ = false>
struct Part {
    static constexpr Kind kind = kind_;
    static constexpr vor_uchar tag = tag_; // a field's offset in its record
    static constexpr bool in_record = in_record_;
    Argument value;

    constexpr explicit Part(std::integral auto number) : value(static_cast<Argument>(number)) {}
    explicit Part(void* pointer) : value(reinterpret_cast<Argument>(pointer)) {}
};

struct Option {
    Argument value;
};

constexpr Option option(std::integral auto low_byte)
{
    return {static_cast<vor_uchar>(low_byte)};
}

template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) <= 2) constexpr auto int16(Value value)
{
    return Part<Kind::int16, tag>(value);
}

// An argument wider than its element, cut on purpose.
template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) == 4) constexpr auto low16(Value value)
{
    return Part<Kind::int16, tag>(value);
}

template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) <= 4) constexpr auto int32(Value value)
{
    return Part<Kind::int32, tag>(value);
}

template <vor_uchar tag>
auto str(vor_char* text)
{
    return Part<Kind::string, tag>(text);
}

template <vor_uchar tag>
constexpr auto byte(vor_uchar value)
{
    return Part<Kind::byte, tag>(value);
}

template <vor_uchar tag>
auto address(vor_char* text)
{
    return Part<Kind::address, tag>(text);
}

template <vor_uchar tag>
auto number(vor_char* text)
{
    return Part<Kind::number, tag>(text);
}

template <vor_uchar tag>
auto strings(Arguments& texts)
{
    return Part<Kind::strings, tag>(&texts);
}

template <vor_uchar tag>
auto addresses(Arguments& texts)
{
    return Part<Kind::addresses, tag>(&texts);
}

template <class Member>
constexpr Kind field_kind = sizeof(Member) == 1   ? Kind::byte
                            : sizeof(Member) == 2 ? Kind::int16
                                                  : Kind::int32;

template <std::size_t offset, class Member, std::integral Value>
requires(sizeof(Value) <= sizeof(Member)) constexpr auto field(Value value)
{
    return Part<field_kind<Member>, offset, true>(value);
}

template <std::size_t offset>
auto address_field(vor_char* text)
{
    return Part<Kind::address, offset, true>(text);
}

template <std::size_t offset, class Member>
requires(sizeof(Member) == 2) auto number_field(vor_char* text)
{
    return Part<Kind::number, offset, true>(text);
}

#define FIELD(record, member) field<offsetof(record, member), decltype(record::member)>
#define ADDRESS_FIELD(record, member) address_field<offsetof(record, member)>
#define NUMBER_FIELD(record, member) number_field<offsetof(record, member), decltype(record::member)>

// --- Descriptions ---------------------------------------------------------

struct Element {
    vor_uchar tag;
    Kind kind;
};

// What is constant about a message; its elements stand right behind it.
struct Description {
    vor_uint32 id;
    Frame frame;
    vor_uint16 record_length; // the bytes sent, also where the record is longer; 0 for a TLV chain

    const Element* elements() const { return reinterpret_cast<const Element*>(this + 1); }
};

template <std::size_t count>
struct Described {
    Description head;
    Element elements[count + 1];
};
static_assert(offsetof(Described<1>, elements) == sizeof(Description));

// A message fits its frame: the option byte has a place and a place has its
// option, a record holds fields where a chain holds elements, and it is written
// only where there is a place for it.
template <class Part>
constexpr bool is_option = std::is_same_v<Part, Option>;
template <bool record, class Part>
constexpr bool belongs = Part::in_record == record;
template <bool record>
constexpr bool belongs<record, Option> = true;

template <Frame frame, bool record, class... Parts>
constexpr bool fits = (is_option<Parts> || ...) == ((frame & (option_byte | flag_byte)) != 0) &&
                      (belongs<record, Parts> && ...) &&
                      (!record || (frame & (null_payload_keeps | null_payload_drops)) != 0);

// `static`, not `inline`: a weak constant would be reached through the GOT on ARM.
template <Frame frame, vor_uint32 id, vor_uint16 record_length, class... Parts>
static constexpr Described<sizeof...(Parts)> elements{{id, frame, record_length},
                                                      {{Parts::tag, Parts::kind}..., {0, Kind::end}}};

template <Frame frame, vor_uint32 id, vor_uint16 record_length, class... Parts>
static constexpr const auto& elements<frame, id, record_length, Option, Parts...> =
    elements<frame, id, record_length, Parts...>;

template <Frame frame, vor_uint32 id, vor_uint16 record_length, class... Parts>
constexpr const Description* describe()
{
    static_assert(fits<frame, record_length != 0, Parts...>);
    return &elements<frame, id, record_length, Parts...>.head;
}

// --- The steps ------------------------------------------------------------

// One call under way.
struct Call {
    VOR_IPC_HANDLE* handle;
    VOR_IPC_MSG_REF request;
    VOR_IPC_MSG_REF response;
    vor_uchar* payload; // where it is written
    vor_uint16 length;
    vor_uchar byte; // of a byte element, until the chain is serialized
};

// Endpoint and buffers, the response's only where the frame awaits one. Like
// every step: 0 to go on, else the code to return.
vor_int32 take(Call& call, Frame frame);

// take, then the payload from the description and the arguments.
vor_int32 prepare_described(Call* call, const Description* description, ...);

// Writes a chain as the payload and frees it.
void serialize(Call& call, TLV_CHAIN& chain);

vor_int32 post(Call& call, Frame frame, vor_uint32 id);
vor_int32 exchange(Call& call, Frame frame, vor_uint32 id);

vor_uint32 answer_id(const Call& call);
bool answers(const Call& call, Frame frame, vor_uint32 id);

// The answer's status, null for an answer without one. Not 0 where such an answer ends the call.
vor_int32 look(Call& call, Frame frame, vor_uint32 id, const void*& status);
// Judges the status and gives the request back, in the frame's order; settle then gives the response back.
vor_int32 judge(Call& call, Frame frame, const void* status);
vor_int32 settle(Call& call, Frame frame, const void* status);
vor_int32 verdict(Call& call, Frame frame, vor_uint32 id);  // look and settle
vor_int32 conclude(Call& call, Frame frame, vor_uint32 id); // post or exchange, as the frame says, and verdict

void drop_both(Call& call);

// Whole calls from a description: any, and the chain that is answered.
vor_int32 message_described(const Description* description, ...);
vor_int32 request_described(const Description* description, ...);
void* statistics_described(const Description* description, ...);

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

// Texts are read when their step comes; a null one is 0.
vor_ip_address address_in(vor_char* text);
vor_uint16 number_in(const vor_char* text);

// --- What families write --------------------------------------------------

template <Frame frame, vor_uint32 id, vor_uint16 record_length = 0, class... Parts>
[[gnu::always_inline]] inline vor_int32 request(Parts... parts)
{
    constexpr const Description* description = describe<frame, id, record_length, Parts...>();
    if constexpr (record_length == 0 && (frame & (one_way | two_buffer_send)) == 0) {
        return request_described(description, parts.value...);
    } else {
        return message_described(description, parts.value...);
    }
}

// Everything before the exchange; the id comes with it.
template <Frame frame, vor_uint16 record_length = 0, class... Parts>
[[gnu::always_inline]] inline vor_int32 prepare(Call& call, Parts... parts)
{
    return prepare_described(&call, describe<frame, 0, record_length, Parts...>(), parts.value...);
}

// The counters of a port, in a buffer already given back; null for every failure.
template <class Record, Frame frame, vor_uint32 id, vor_uint16 record_length, class... Parts>
[[gnu::always_inline]] inline Record* statistics(Parts... parts)
{
    return static_cast<Record*>(statistics_described(describe<frame, id, record_length, Parts...>(), parts.value...));
}

#pragma GCC visibility pop
