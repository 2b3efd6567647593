// rule.hpp: one fault rule as data: which messages it matches, what happens to them, until when.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorsim::faults {

using Milliseconds = std::chrono::milliseconds;

// The parts of a message that rules match.
struct Subject {
    bool konfd{};
    std::uint16_t sap{};
    std::uint16_t client{};
    std::uint32_t id{};
    std::string_view call{};   // empty where the message was refused
    std::string_view object{}; // konfd: the commands
    bool answered{};
};

struct Condition {
    enum class Who : std::uint8_t { manager, any, konfd };
    Who who{};
    std::uint16_t sap{};
    std::optional<std::uint32_t> id{};
    std::string call{};
    std::string object{}; // konfd: a part of its commands
    std::optional<std::uint16_t> client{};

    enum class When : std::uint8_t { always, nth, every_nth, chance };
    When when{};
    std::uint32_t number{}; // of the message, or millionths of a chance

    bool matches(const Subject& subject) const;
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
    std::string text{};                 // konfd's answer
    std::vector<std::int32_t> script{}; // statuses in turn; the last one stays

    // Whether it also acts on messages that await no answer.
    bool acts_on_one_way() const { return kind == Kind::refuse || kind == Kind::die; }
    // Whether it takes the manager's place, who is not asked.
    bool acts_instead() const { return kind == Kind::status || acts_on_one_way(); }
};

struct End {
    std::optional<std::uint32_t> times{};
    std::optional<Milliseconds> time{};
};

struct Rule {
    std::string text; // as it was written
    Condition condition{};
    Action action{};
    End end{};

    std::string action_text; // the part noted on the messages that it acted on
};

} // namespace vorsim::faults
