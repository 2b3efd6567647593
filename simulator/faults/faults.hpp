// faults.hpp: what is done about a message between its judgement and its answer.
#pragma once

#include "faults/rule_list.hpp"
#include "gateway/gateway.hpp"
#include "konfd/konfd.hpp"

namespace vorsim::faults {

// How an answer goes out.
struct Delivery {
    enum class Way : std::uint8_t {
        once,
        twice,
        behind_the_next, // of the same manager
        never,
        refused, // as though nobody had received the message
        dying,   // never, and the manager is gone for a time
    };
    Way way{};
    Milliseconds wait{}; // before it, or until the manager is back
};

// Has the rule that is due disturb the decision, which then tells of it.
Delivery disturb(Decision& decision, const DueRule& due);

// How konfd's answer is heard.
enum class ReplyFault : std::uint8_t {
    whole,
    split, // its first byte, and the rest when that was read
    never,
    hung_up,
};

// konfd has done what it was told: the fault is in what it says of it.
ReplyFault disturb(konfd::Reply& reply, const DueRule& due);

} // namespace vorsim::faults
