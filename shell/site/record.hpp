// record.hpp: the records of a journal, each a line of JSON.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "call/call_key.hpp"

namespace vor {
class Json;
}

namespace vorcfg {

struct GatewayNamed {
    std::string gateway; // empty: nobody has said which
    bool is_first;       // the first record of every journal
};

struct CallBegun {
    std::uint64_t number = 0; // from 1 on
    std::string at{};         // a stamp
    std::string file{};
    std::size_t line = 0;
    CallKey key{};
    std::optional<std::uint64_t> replaces{};   // the call that stood before
    std::optional<std::uint64_t> takes_back{}; // the call that is undone by this one
};

struct CallEnded {
    std::uint64_t number = 0;
    std::string at{};
    std::string outcome{};
    std::string verdict{};
    std::optional<bool> done{}; // nothing: nobody knows
};

// A confirmed apply that is neither confirmed nor taken back.
struct ApplyPending {
    std::uint64_t first; // its calls from this number on
    std::string until{}; // a stamp; empty while it is being made
    int process = 0;     // which waits
};

struct ApplyDecided {
    bool kept; // false: taken back
};

using Record = std::variant<GatewayNamed, CallBegun, CallEnded, ApplyPending, ApplyDecided>;

// Who writes it, and when, stands in a record that does not say so itself.
std::string text_of(const Record& record);
// Throws a JsonError about a line that is broken, a InputError about what says nothing to this version.
Record record_in(std::string_view line, bool is_first);

// The values by their arguments' names.
vor::Json values_json(const CallKey& key);

// "2026-05-12T10:04:00Z"; of now, which SOURCE_DATE_EPOCH sets, so that what is written can be reproduced.
std::string stamp(std::chrono::seconds from_now = {});
std::string minute_of(std::string_view stamp); // "2026-05-12 10:04 UTC"
std::string second_of(std::string_view stamp); // "2026-05-12 10:04:00 UTC"

} // namespace vorcfg
