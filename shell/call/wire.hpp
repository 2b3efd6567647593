// wire.hpp: what a call sends, observed: its example is tried on a platform that only captures, one argument changed at
// a time over its range.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "call/message.hpp"
#include "call/verdict.hpp"

namespace vorcfg::call {

// A value in the message, and the argument that alone decides it.
struct WirePart {
    enum class Place : std::uint8_t { sap, option, flag, element, field };
    Place place;
    std::uint16_t tag = 0;                    // of an element
    Element::Kind kind{};                     // of an element
    const rows::RecordField* field = nullptr; // of the record
    const rows::Argument* argument = nullptr; // a list's is in an element for each of its values
};

// The answers with which the call succeeds.
struct WireAnswer {
    std::vector<std::uint32_t> ids;
    unsigned id_bits = 32;              // so many low ones are compared
    std::vector<std::int32_t> statuses; // none: the answer is a record
};

struct Wire {
    std::vector<Message> messages; // of the example; none: the call sends nothing
    std::vector<WirePart> parts;   // of the first message, in order
    std::string computed;          // why they are not all that the call sends; empty: they are
    std::vector<const rows::Argument*> unsent;
    bool send_unchecked = false; // it succeeds even where its one-way message could not be sent
    bool prints = false;         // on standard output, if only in some cases
    std::optional<WireAnswer> answer;
    std::vector<std::int32_t> codes; // that the call returned, whatever became of its message
    std::vector<Outcome> outcomes;

    bool is_unsent(const rows::Argument& argument) const;
};

// Each call is tried once.
const Wire& wire_of(const rows::Row& row);

// In the words of an error: "element 4".
std::string name_of(const WirePart& part);

} // namespace vorcfg::call
