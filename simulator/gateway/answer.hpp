// answer.hpp: a manager's answer: its bytes and their values.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "values/value.hpp"

namespace vorsim::gateway {

struct Answer {
    std::vector<std::uint8_t> bytes{};
    std::vector<values::Value> values{};

    explicit Answer(std::size_t size) : bytes(size) {}

    // Writes a number into the record, in the gateway's byte order.
    template <std::integral Number>
    Answer& put(std::size_t offset, std::string_view name, Number number)
    {
        const auto* const from = reinterpret_cast<const std::uint8_t*>(&number);
        std::copy(from, from + sizeof number, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
        using Widest = std::conditional_t<std::is_signed_v<Number>, std::int64_t, std::uint64_t>;
        values.push_back({std::string(name), std::to_string(number), static_cast<Widest>(number)});
        return *this;
    }
};

} // namespace vorsim::gateway
