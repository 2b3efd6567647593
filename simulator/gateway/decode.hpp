// decode.hpp: a message against the tables.
#pragma once

#include <span>
#include <variant>

#include "gateway/decoded.hpp"

namespace vorsim {

// A message as it came in.
struct Message {
    std::uint16_t sap{}; // the manager it reached
    std::uint16_t source{};
    std::uint32_t id{};
    bool answer_wanted{};
    std::span<const std::uint8_t> meta_data{};
    std::span<const std::uint8_t> payload{};
};

// The statuses a complaint is answered with.
enum Refusal : std::int32_t {
    unknown_message = 2, // no such id at this manager
    wrong_elements = 3,  // a tag, kind, order, length or fixed value
    wrong_manner = 4,    // a request sent one-way, or a one-way message that waits
    no_room = 5,         // right, but more than is kept
};

struct Complaint {
    Refusal status{};
    std::string text;
};

std::variant<Decoded, Complaint> decode(const Message& message, bool show_secrets);

} // namespace vorsim
