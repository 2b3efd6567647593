// match.hpp: the one place where a message is accepted or complained about.
#pragma once

#include <variant>

#include "gateway/fit.hpp"

namespace vorsim {

// A message as it came in.
struct Message {
    std::uint16_t sap{}; // the manager it reached
    std::uint16_t source{};
    std::uint32_t id{};
    bool answer_wanted{};
    Bytes meta_data{};
    Bytes payload{};
};

// The statuses a complaint is answered with.
enum Refusal : std::int32_t {
    unknown_message = 2, // no such id at this manager
    wrong_elements = 3,  // a tag, kind, order, length or fixed value
    wrong_manner = 4,    // a request sent one-way, or a one-way message that waits
    no_room = 5,         // right, but more than is kept
};

struct Mismatch {
    Refusal status{};
    std::string text;
};

// An accepted message: its row and what it holds for it.
struct Match {
    const MessageRow* row{};
    std::optional<std::uint8_t> lead{}; // the option or flag byte
    std::vector<Part> parts{};
};

std::variant<Match, Mismatch> match(const Message& message);

} // namespace vorsim
