// client.hpp: one client, from its start to its end, which may come during a call.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

namespace soak {

inline constexpr unsigned most_clients = 8;
inline constexpr std::uint16_t mark_sap = 99; // no manager: messages to it are only recorded
inline constexpr int patience_ms = 1500;      // how long the platform waits for an answer

// What the processes share.
struct Shared {
    std::atomic<unsigned> gateway; // the number of the current one
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
    unsigned life; // how often it was restarted
    std::chrono::steady_clock::time_point end;
};

std::string journal_of(const std::string& place, unsigned gateway);

// 0: every call had an expected outcome. Some lives end by SIGKILL.
int run(const Part& part);

} // namespace soak
