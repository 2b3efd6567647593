// match.hpp: the one place where a message is accepted or refused.
#pragma once

#include <variant>

#include "gateway/fit.hpp"

namespace vorsim::gateway {

// A message as it came in.
struct Message {
    std::uint16_t sap{}; // the manager it reached
    std::uint16_t source{};
    std::uint32_t id{};
    bool answer_wanted{};
    Bytes meta_data{};
    Bytes payload{};
};

// The statuses that a refused message is answered with.
enum Refusal : std::int32_t {
    unknown_message = 2, // an id that this manager does not have
    wrong_elements = 3,  // a tag, kind, order, length or fixed value
    wrong_manner = 4,    // a request sent one-way, or a one-way message that awaits an answer
    no_space = 5,        // valid, but there is no space to store it
};

struct Mismatch {
    Refusal status{};
    std::string text;
};

// An accepted message: its row and the row's fields in it.
struct Match {
    const tables::MessageRow* row{};
    std::optional<std::uint8_t> lead{}; // the option or flag byte
    std::vector<Part> parts{};
};

std::variant<Match, Mismatch> match(const Message& message);

} // namespace vorsim::gateway
