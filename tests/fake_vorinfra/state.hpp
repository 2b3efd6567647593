// state.hpp: what the fake's own files share.
#pragma once

#include "fake_vorinfra.hpp"

#include <deque>

namespace fake {

struct Buffer {
    static constexpr int header = static_cast<int>(sizeof(VOR_IPC_MSG_HDR));
    static constexpr int room = 4096;

    std::vector<vor_uchar> bytes = std::vector<vor_uchar>(header + room, pattern);
    bool dropped = false;
    bool meta_data_taken = false;
    int chain_at = -1; // where in the data a chain was serialized
    int chain_size = 0;

    vor_uchar* data() { return bytes.data() + header; }
};

struct Element {
    vor_uint16 tag;
    const char* kind;
    vor_int32 number;
    const void* bytes; // read when the chain is serialized, as a platform may
};

struct State {
    std::vector<std::string> events;
    std::deque<Buffer> buffers;
    int buffers_asked = 0;
    std::string steps;
    bool place_given = false; // for the request's payload
    std::map<const TLV_CHAIN*, std::vector<Element>> chains;
    VOR_TIMER_CALLBACK timer_callback = nullptr;
    int sends = 0;
    int receives = 0;
    std::map<void*, std::vector<vor_uchar>> memory;
    int allocations = 0;
};

extern State state;

void note(std::string event);
void step(char letter);
Buffer* buffer_of(const VOR_IPC_MSG_REF* message);

} // namespace fake
