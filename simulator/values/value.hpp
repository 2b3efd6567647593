// value.hpp: named values, for people and for programs.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace vorsim {

inline constexpr std::size_t longest_in_line = 80; // of a text

using Scalar = std::variant<std::int64_t, std::uint64_t, std::string>;
using List = std::vector<Scalar>;

// Ready to be shown: a secret is masked already.
struct Value {
    std::string name;
    std::string text;
    std::variant<Scalar, List> data;
    bool in_object{}; // told by the object's own text

    // What it holds of this type; null where that is something else.
    template <class Type>
    const Type* held() const
    {
        return std::get_if<Type>(std::get_if<Scalar>(&data));
    }
};

} // namespace vorsim
