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

namespace vorcfg::site {

struct GatewayNamed {
    std::string gateway; // empty: not known
    bool is_first;       // the first record of every journal
};

struct CallBegun {
    std::uint64_t number = 0; // from 1 on
    std::string at{};         // a stamp
    std::string file{};
    std::size_t line = 0;
    call::CallKey key{};
    std::optional<std::uint64_t> replaces{};   // the call done before
    std::optional<std::uint64_t> takes_back{}; // the call that this one reverts
};

struct CallEnded {
    std::uint64_t number = 0;
    std::string at{};
    std::string outcome{};
    std::string verdict{};
    std::optional<bool> done{}; // none: not known
};

// An apply --confirm that is neither confirmed nor reverted.
struct ApplyPending {
    std::uint64_t first; // its first call
    std::string until{}; // a stamp; empty while the calls are being made
    int process = 0;     // the one that waits
};

struct ApplyDecided {
    bool confirmed; // else reverted
};

using Record = std::variant<GatewayNamed, CallBegun, CallEnded, ApplyPending, ApplyDecided>;

// Adds the user and the time where the record does not have them.
std::string text_of(const Record& record);
// Throws a JsonError about a line that is not JSON, an InputError about one that is not a record of this version.
Record record_in(std::string_view line, bool is_first);

// The values by their arguments' names.
vor::Json values_json(const call::CallKey& key);

// "2026-05-12T10:04:00Z"; SOURCE_DATE_EPOCH sets the present, so that output can be reproduced.
std::string stamp(std::chrono::seconds from_now = {});
std::string minute_of(std::string_view stamp); // "2026-05-12 10:04 UTC"
std::string second_of(std::string_view stamp); // "2026-05-12 10:04:00 UTC"

} // namespace vorcfg::site
