// record.hpp: the records of a journal, each a line of JSON.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "call/call_key.hpp"

namespace vor {
class Json;
}

namespace vorcfg::site {

struct GatewayNamed {
    std::string gateway; // empty: not known
    bool is_first;       // the first record of every journal
    std::string at{};    // a stamp, as all of these
};

struct CallBegun {
    std::uint64_t number = 0; // from 1 on
    std::string at{};
    std::string by{}; // a user; empty: this process's
    std::string file{};
    std::size_t line = 0;
    call::CallKey key{};
    std::optional<std::uint64_t> replaces{};   // the call in effect before
    std::optional<std::uint64_t> takes_back{}; // the call that this one reverts
};

struct CallEnded {
    std::uint64_t number = 0;
    std::string at{};
    std::string outcome{};
    std::string verdict{};
    std::optional<bool> done{}; // none: not known
    std::optional<std::int32_t> status{};
};

// An apply --confirm: before its first call, and again when the last has been made.
struct ApplyPending {
    std::uint64_t first = 0; // its first call
    std::string at{};
    std::string until{}; // a stamp, to be shown
    std::string boot{};  // the deadline; empty in an older journal, where the stamps must do
    std::chrono::milliseconds deadline{};
    int process = 0;        // the one that waits
    bool reverting = false; // without records, for which there was no room
};

struct ApplyDecided {
    bool confirmed; // else reverted, as far as possible
    std::string at{};
};

// Calls that are not in effect any more, whatever was recorded: the gateway was reset or replaced.
struct CallsVoided {
    std::vector<std::uint64_t> numbers;
    std::string at{};
};

using Record = std::variant<GatewayNamed, CallBegun, CallEnded, ApplyPending, ApplyDecided, CallsVoided>;

// Adds this process's user.
std::string text_of(const Record& record);
// Throws a JsonError about a line that is not JSON, an InputError about one that is not a record of this version.
Record record_in(std::string_view line, bool is_first);

// Where the text of an ApplyPending says that it is not being reverted, and what says the opposite.
inline constexpr std::string_view not_reverting = "\"reverting\":false";
inline constexpr std::string_view now_reverting = "\"reverting\":true ";
static_assert(not_reverting.size() == now_reverting.size());

// The values by their arguments' names.
vor::Json values_json(const call::CallKey& key);

} // namespace vorcfg::site
