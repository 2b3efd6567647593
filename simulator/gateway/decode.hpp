// decode.hpp: one message as its manager understands it, in names and values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "values/value.hpp"

namespace vorsim::tables {
struct Field;
struct MessageRow;
} // namespace vorsim::tables

namespace vorsim::gateway {

struct Match;

struct Decoded {
    std::uint16_t sap{}; // the manager it reached
    const tables::MessageRow* row{};
    std::string object{};
    std::vector<values::Value> values{};

    // A number that the message must hold; 0 if there is none.
    std::int32_t number(std::string_view name) const;
};

// An accepted message.
Decoded decode(std::uint16_t sap, const Match& match, bool show_secrets);

// What the field holds, ready to be shown; null: the option or flag byte.
values::Value value_of(const tables::MessageRow& row, const tables::Field* field,
                       std::variant<values::Scalar, values::List> data);

// The object's text with the values in place of their names.
std::string object_of(std::string_view pattern, const std::vector<values::Value>& values);

// "name=value ...", without the values that the object holds.
std::string values_text(const std::vector<values::Value>& values);

} // namespace vorsim::gateway
