// verdict.hpp: the outcome of a call, from the messages seen at the platform's boundary, not guessed from its code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "call/observer.hpp"
#include "input/input_error.hpp"

namespace vorcfg::call {

enum class Outcome {
    accepted,
    sent,
    done,
    nothing_to_do,
    dry_run,
    refused,
    rejected,
    not_delivered,
    not_sent,
    unread,
    unknown,
    no_endpoint,
    contradiction,
};

inline constexpr std::size_t outcome_count = static_cast<std::size_t>(Outcome::contradiction) + 1;

struct Verdict {
    Outcome outcome{};
    std::string text;   // one line, without the call's name
    std::string hint{}; // what to do about it
};

Verdict judged(const rows::Row& row, const rows::Returned& back, std::int32_t manager_errno, const Observation& seen);

// What is known of a setting after a call.
enum class State : std::uint8_t {
    accepted,
    sent,   // one-way: no verdict will come
    unread, // the answer says that it was done, and the call does not read it
    refused,
    not_delivered, // as it was
    unknown,       // may or may not have been done, or in part
};

State state_of(const rows::Row& row, Outcome outcome, const Observation& seen);
std::string_view name_of(State state);

// What is sent one-way counts as made.
constexpr bool is_made(State state)
{
    return state <= State::unread;
}

std::string_view name_of(Outcome outcome);
std::string_view about(Outcome outcome);    // "by the manager or konfd"
std::string_view total_of(Outcome outcome); // as in "2 not sent"
// The text without what the outcome's name says already.
std::string_view detail_of(const Verdict& verdict);
input::ExitCode exit_of(Outcome outcome);

} // namespace vorcfg::call
