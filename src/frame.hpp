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
// is written out from the same steps: prepare, exchange, verdict.
#pragma once

#include <concepts>
#include <cstdarg>
#include <cstddef>
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
constexpr Frame flag_byte = 1u << 19;              // the first argument leads the payload, and counts in its length
constexpr Frame null_payload_keeps = 1u << 20;     // no place to write: -4, what was taken stays taken
constexpr Frame null_payload_drops = 1u << 21;     // no place to write: -4, what was taken is given back
constexpr Frame one_way = 1u << 22;                // sent, never answered
constexpr Frame sent_buffer_kept = 1u << 23;       // once sent, the buffer is the platform's
constexpr Frame two_buffer_send = 1u << 24;        // sent with both buffers taken, result as it is, nothing given back
constexpr Frame refused_keeps_response = 1u << 25; // a refused exchange gives back the request only
constexpr Frame request_dropped_first = 1u << 26;  // given back before the answer is looked at
constexpr Frame id_low_half = 1u << 27;            // answers are known by the low 16 bits of their id
constexpr Frame answer_unread = 1u << 28;          // a 16-bit id against a wider one: no answer ever matches
constexpr Frame empty_answer_keeps = 1u << 29;     // the right answer without a status: -4, buffers stay taken

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
    strings, // every further argument of the call, under one tag
    byte,
    address,
    addresses,
    field8,
    field16,
    field32,
    address_field,
};

// The arguments behind a call's dots.
struct Arguments {
    vor_int32 count;
    va_list list;
};

template <Kind kind_, vor_uchar tag_, class Value>
struct Part {
    static constexpr Kind kind = kind_;
    static constexpr vor_uchar tag = tag_; // a field's offset in its record
    Value value;
};

struct Option {
    vor_int32 value;
};

constexpr Option option(std::integral auto low_byte)
{
    return {static_cast<vor_uchar>(low_byte)};
}

template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) <= 2) constexpr Part<Kind::int16, tag, vor_int32> int16(Value value)
{
    return {value};
}

// An argument wider than its element, cut on purpose.
template <vor_uchar tag, std::integral Value>
requires(sizeof(Value) == 4) constexpr Part<Kind::int16, tag, vor_int32> low16(Value value)
{
    return {static_cast<vor_int32>(value)};
}

template <vor_uchar tag, std::integral Value>
constexpr Part<Kind::int32, tag, vor_int32> int32(Value value)
{
    static_assert(sizeof(Value) <= 4);
    return {static_cast<vor_int32>(value)};
}

template <vor_uchar tag>
constexpr Part<Kind::string, tag, vor_char*> str(vor_char* text)
{
    return {text};
}

template <vor_uchar tag>
constexpr Part<Kind::strings, tag, Arguments*> strings(Arguments& texts)
{
    return {&texts};
}

template <vor_uchar tag>
constexpr Part<Kind::byte, tag, vor_int32> byte(vor_uchar value)
{
    return {value};
}

// A dotted quad; what does not parse is sent as 0.
template <vor_uchar tag>
constexpr Part<Kind::address, tag, vor_char*> address(vor_char* text)
{
    return {text};
}

template <vor_uchar tag>
constexpr Part<Kind::addresses, tag, Arguments*> addresses(Arguments& texts)
{
    return {&texts};
}

template <class Member>
constexpr Kind field_kind = sizeof(Member) == 1   ? Kind::field8
                            : sizeof(Member) == 2 ? Kind::field16
                                                  : Kind::field32;

template <std::size_t offset, class Member, std::integral Value>
requires(sizeof(Value) <= sizeof(Member)) constexpr Part<field_kind<Member>, offset, vor_int32> field(Value value)
{
    return {static_cast<vor_int32>(value)};
}

template <std::size_t offset>
constexpr Part<Kind::address_field, offset, vor_char*> address_field(vor_char* text)
{
    return {text};
}

#define FIELD(record, member) field<offsetof(record, member), decltype(record::member)>
#define ADDRESS_FIELD(record, member) address_field<offsetof(record, member)>

// --- Descriptions ---------------------------------------------------------

struct Element {
    vor_uchar tag;
    Kind kind;
};

// What is constant about a message; its elements stand right behind it.
struct Description {
    vor_uint32 id;
    Frame frame;
    vor_uchar record_length; // the bytes sent, also where the record is longer; 0 for a TLV chain
    vor_uchar count;

    const Element* elements() const { return reinterpret_cast<const Element*>(this + 1); }
};

template <std::size_t count>
struct Described {
    Description head;
    Element elements[count == 0 ? 1 : count];
};
static_assert(offsetof(Described<1>, elements) == sizeof(Description));

// A message fits its frame: the option byte has a place and a place has its
// option, and a record holds fields where a chain holds elements.
template <class Part>
constexpr bool is_field = Part::kind >= Kind::field8;
template <>
constexpr bool is_field<Option> = false;
template <class Part>
constexpr bool is_option = std::is_same_v<Part, Option>;

template <Frame frame, bool record, class... Parts>
constexpr bool fits = (is_option<Parts> || ...) == ((frame & (option_byte | flag_byte)) != 0) &&
                      ((is_option<Parts> || is_field<Parts> == record) && ...);

// `static`, not `inline`: a weak constant would be reached through the GOT on ARM.
template <Frame frame, vor_uint32 id, vor_uchar record_length, class... Parts>
static constexpr Described<sizeof...(Parts)> elements{{id, frame, record_length, sizeof...(Parts)},
                                                      {{Parts::tag, Parts::kind}...}};

template <Frame frame, vor_uint32 id, vor_uchar record_length, class... Parts>
static constexpr const auto& elements<frame, id, record_length, Option, Parts...> =
    elements<frame, id, record_length, Parts...>;

template <Frame frame, vor_uint32 id, vor_uchar record_length, class... Parts>
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
    vor_uint16 length; // of the payload
};

// Endpoint and buffers. Like every step: 0 to go on, else the code to return.
vor_int32 take(Call& call, Frame frame);

// take, then the payload from the description and the arguments.
vor_int32 prepare_described(Call* call, const Description* description, ...);

// Writes a chain to where the payload goes and frees it.
void serialize(Call& call, TLV_CHAIN& chain, vor_uchar* payload);

vor_int32 post(Call& call, Frame frame, vor_uint32 id);
vor_int32 exchange(Call& call, Frame frame, vor_uint32 id);

vor_uint32 answer_id(const Call& call);
bool answers(const Call& call, Frame frame, vor_uint32 id);
bool accepted(Call& call, Frame frame, vor_uint32 id); // looks only: gives nothing back

// Judges the answer and gives the buffers back.
vor_int32 verdict(Call& call, Frame frame, vor_uint32 id);
vor_int32 settle(Call& call, Frame frame, const void* status);
vor_int32 conclude(Call& call, Frame frame, vor_uint32 id); // post or exchange, as the frame says, and verdict

void drop_both(Call& call);

// Whole calls from a description.
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

// --- What families write --------------------------------------------------

template <Frame frame, vor_uint32 id, vor_uchar record_length = 0, class... Parts>
[[gnu::always_inline]] inline vor_int32 request(Parts... parts)
{
    return request_described(describe<frame, id, record_length, Parts...>(), parts.value...);
}

template <Frame frame, vor_uint32 id, vor_uchar record_length = 0, class... Parts>
[[gnu::always_inline]] inline vor_int32 prepare(Call& call, Parts... parts)
{
    return prepare_described(&call, describe<frame, id, record_length, Parts...>(), parts.value...);
}

// The counters of a port, in a buffer already given back; null for every failure.
template <class Record, Frame frame, vor_uint32 id, vor_uchar record_length, class... Parts>
[[gnu::always_inline]] inline Record* statistics(Parts... parts)
{
    return static_cast<Record*>(statistics_described(describe<frame, id, record_length, Parts...>(), parts.value...));
}

#pragma GCC visibility pop
