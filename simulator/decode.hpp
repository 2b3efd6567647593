/* decode.hpp: a message against the tables. */
#pragma once

#include <span>
#include <variant>

#include "told.hpp"

namespace vorsim {

/* A message as it came in. */
struct Incoming {
    std::uint16_t sap{}; // the manager it reached
    std::uint16_t source{};
    std::uint32_t id{};
    bool answer_wanted{};
    std::span<const std::uint8_t> meta_data{};
    std::span<const std::uint8_t> payload{};
};

/* The statuses a complaint is answered with. */
enum Refusal : std::int32_t {
    unknown_message = 2, // no such id at this manager
    wrong_elements = 3,  // a tag, kind, order, length or fixed value
    wrong_manner = 4,    // a request sent one-way, or a notice that waits
};

struct Complaint {
    Refusal status{};
    std::string what;
};

std::variant<Told, Complaint> decode(const Incoming& message, bool show_secrets);

} // namespace vorsim
