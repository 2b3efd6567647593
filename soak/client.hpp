// client.hpp: one client, from its start to its end, which may be in the midst of a call.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

namespace soak {

inline constexpr unsigned most_clients = 8;
inline constexpr std::uint16_t mark_sap = 99; // of no manager: what is sent there is only written down
inline constexpr int patience_ms = 1500;      // of the platform: how long an answer is waited for

// What the processes share.
struct Shared {
    std::atomic<unsigned> gateway; // how many there have been
    struct Tally {
        std::atomic<std::uint64_t> calls, answered, unanswered, undecided, konfd, kept;
    };
    Tally tallies[most_clients];
};

struct Part {
    Shared& shared;
    std::string place; // of the journals: PLACE/journal.N
    std::uint64_t seed;
    unsigned client;
    unsigned life; // how often it was there before
    std::chrono::steady_clock::time_point end;
};

std::string journal_of(const std::string& place, unsigned gateway);

// 0: every call came to what it must. Some lives end by SIGKILL.
int run(const Part& part);

} // namespace soak
