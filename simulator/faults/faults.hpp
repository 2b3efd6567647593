// faults.hpp: how a fault changes a decision before it is answered.
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
        after_the_next, // of the same manager
        never,
        refused, // as if nobody had received the message
        dying,   // never, and the manager is down for a time
    };
    Way way{};
    Milliseconds wait{}; // before the answer, or until the manager is back
};

// Applies the rule that is due and notes it in the record.
Delivery apply(gateway::Decision& decision, const DueRule& due);

// How konfd's answer arrives.
enum class ReplyFault : std::uint8_t {
    whole,
    split, // its first byte, and the rest once that was read
    never,
    hung_up,
};

// The commands have been carried out: only the answer changes.
ReplyFault apply(konfd::Reply& reply, const DueRule& due);

} // namespace vorsim::faults
