// rule.hpp: one fault as data: what it concerns, what happens, until when.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vorsim::faults {

using Milliseconds = std::chrono::milliseconds;

// What a message is, as far as rules go.
struct Subject {
    bool konfd{};
    std::uint16_t sap{};
    std::uint16_t client{};
    std::uint32_t id{};
    std::string_view call{};   // empty where the message was complained about
    std::string_view object{}; // konfd: the commands
    bool answered{};
};

struct Concern {
    enum class Who : std::uint8_t { manager, any, konfd };
    Who who{};
    std::uint16_t sap{};
    std::optional<std::uint32_t> id{};
    std::string call{};
    std::string object{}; // konfd: a part of the commands
    std::optional<std::uint16_t> client{};

    enum class When : std::uint8_t { always, nth, every_nth, chance };
    When when{};
    std::uint32_t number{}; // of the message, or millionths of a chance

    bool covers(const Subject& subject) const;
};

struct Action {
    enum class Kind : std::uint8_t {
        status,
        id_low,
        id_high,
        id,
        no_payload,
        short_payload,
        late,
        doubled,
        swapped,
        never,
        refuse,
        die,
        answer,
        split,
        hang_up,
    };
    Kind kind{};
    std::int64_t number{}; // a status, an id, bytes
    Milliseconds time{};
    std::string text{}; // konfd's answer

    // Whether it also befalls messages that await no answer.
    bool befalls_one_way() const { return kind == Kind::refuse || kind == Kind::die; }
};

struct End {
    std::optional<std::uint32_t> times{};
    std::optional<Milliseconds> time{};
};

struct Rule {
    std::string text; // as it was written
    Concern concern{};
    Action action{};
    End end{};

    // ": ..." up to the end: what is said of a message that it befell.
    std::string action_text;
};

} // namespace vorsim::faults
