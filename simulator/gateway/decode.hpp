// decode.hpp: one message as its manager understands it, in names and values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "values/value.hpp"

namespace vorsim {

struct Field;
struct Match;
struct MessageRow;

struct Decoded {
    std::uint16_t sap{}; // the manager it reached
    const MessageRow* row{};
    std::string object{};
    std::vector<Value> values{};

    // A number that the message must hold; 0 if there is none.
    std::int32_t number(std::string_view name) const;
};

// An accepted message.
Decoded decode(std::uint16_t sap, const Match& match, bool show_secrets);

// What the field holds, ready to be shown; null: the option or flag byte.
Value value_of(const MessageRow& row, const Field* field, std::variant<Scalar, List> data);

// "name=value ...", without the values that the object holds.
std::string values_text(const std::vector<Value>& values);

} // namespace vorsim
