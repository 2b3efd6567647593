// value.hpp: named values, for people and for programs.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace vorsim::values {

inline constexpr std::size_t longest_in_line = 80; // of a text

using Scalar = std::variant<std::int64_t, std::uint64_t, std::string>;
using List = std::vector<Scalar>;

// Ready to be shown: secrets are masked.
struct Value {
    std::string name;
    std::string text;
    std::variant<Scalar, List> data;
    bool in_object{}; // part of the object's text

    // Null: it holds another type.
    template <class Type>
    const Type* held() const
    {
        return std::get_if<Type>(std::get_if<Scalar>(&data));
    }
};

} // namespace vorsim::values
