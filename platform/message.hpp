// message.hpp: one message is one datagram: the header, then meta-data and
// payload.
#pragma once

#include <cstring>

#include "endpoint.hpp"

namespace vorinfra {

// The header's flag: 0 for a one-way message, else the number that ties an
// answer to its request; an answer has the top bit set, so that two managers
// can never answer each other's answers.
constexpr vor_uint16 answer_bit = 0x8000;
constexpr vor_uint16 sequence_bits = 0x7fff;

// An answer never has meta-data: one that consists of meta-data alone means that the request was refused.
constexpr char refusal[] = "refused";
constexpr vor_uint16 refusal_size = sizeof refusal - 1;

inline bool is_refusal(const VOR_IPC_MSG_HDR& answer, const void* data)
{
    return answer.meta_data_sz == refusal_size && answer.payload_sz == 0 && memcmp(data, refusal, refusal_size) == 0;
}

enum class Received { message, nothing, garbage };

// Sends to the header's destination. False with errno: not sent.
bool send_message(const Endpoint& endpoint, const VOR_IPC_MSG_HDR& header, const void* data, int flags);

// Receives into the header and the VORINFRA_DATA_MAX bytes of data. Garbage
// has been reported; with nothing, errno tells why.
Received receive_message(const Endpoint& endpoint, VOR_IPC_MSG_HDR& header, void* data, int flags);

void toggle_trace(vor_uint16 sap);

} // namespace vorinfra
