// fake_vorinfra.hpp: a platform library that behaves as a test scripts it and records every call.
#pragma once

#include <vorinfra.h>

#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace fake {

// The bytes of a message buffer and of fresh memory before anyone writes to them.
inline constexpr vor_uchar pattern = 0xa5;

// What the platform does. By default everything succeeds and every answer is status 0 under the id sent.
// "nth" counts from 1; 0 is never.
struct Script {
    bool bind_fails = false;
    vor_bool unbind_result = 1;

    int failing_buffer = 0;    // the nth request for a buffer fails
    int null_payload = 0;      // the nth buffer has no payload pointer...
    int null_payload_from = 0; // ...at this offset and behind it
    bool null_meta_data = false;
    vor_int32 exchange_result = 0;
    vor_int32 send_result = 0;
    std::optional<vor_int32> serialized_size; // what the serializer reports, whatever it wrote

    std::optional<vor_uint32> answer_id; // instead of the id sent
    vor_uint32 answer_id_flips = 0;      // bits turned over in the answer's id
    std::vector<vor_uchar> answer = {0, 0, 0, 0};
    int answer_skew = 0;               // the answer's payload begins this many bytes later
    bool dropped_buffers_stay = false; // a buffer handed back keeps its bytes

    bool timer_missing = false;
    bool socket_missing = false;
    vor_int32 config_result = 0;
    vor_int32 connect_result = 0;
    vor_int32 close_result = 0;
    std::map<int, vor_int32> socket_sends; // the nth send's result; the count otherwise
    std::vector<std::string> replies;      // what each receive finds, in turn
    std::map<int, vor_int32> receives;     // the nth receive's result; the bytes found otherwise

    int failing_allocation = 0;   // memory is short from the nth on...
    bool memory_recovers = false; // ...or for that one alone

    std::function<void()> witness; // looks, before each step of a call, what has changed since the last
};

extern Script script;

// A platform that has seen nothing yet. Frees all memory it ever handed out.
void reset();

// All calls, in order: messages, timers, log lines, sockets, shell commands.
std::string events();
// The first word of each.
std::string event_names();

// The steps of a call, a letter each:
//   Q P   the request's and the response's buffer asked for
//   m     the request's meta-data pointer asked for
//   0 1   the request's payload pointer asked for, at this offset
//   c     a chain built, written and freed (i e w f: begun, added to, written, freed, otherwise than in one go)
//   x s   exchanged, sent one-way
//   a     the answer's payload pointer asked for (a4: at offset 4)
//   q p   the request, the response given back (!: what was not taken)
//   d     the platform's trace switched
//   t l g timer made, line logged, timer started
//   r     a text read although there was no place for it yet
std::string steps();
void mark(char letter); // adds a letter of the witness's own
void note_text_read();

VOR_IPC_HANDLE* handle();
vor_uchar* data_of_buffer(int nth);
VOR_TIMER_CALLBACK timer_callback();
int allocations(); // asked for since the last reset
int live_allocations();
bool allocation_failed(); // since the last reset

template <class... Parts>
std::string text_of(const Parts&... parts)
{
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

// Bytes as text: hexadecimal, 'printable runs', and xx*n for four equal bytes or more.
std::string bytes_text(const vor_uchar* bytes, int count);
// A text with its control characters and zeros spelt out.
std::string spelt(const std::string& text);

} // namespace fake
