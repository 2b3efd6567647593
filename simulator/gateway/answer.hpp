// answer.hpp: a manager's answer: its bytes and their values.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "values/value.hpp"

namespace vorsim::gateway {

struct Answer {
    // A value in the record, and how to read it from another one.
    struct Place {
        std::size_t offset;
        void (*read)(values::Value& value, const std::uint8_t* from);
    };

    std::vector<std::uint8_t> bytes{};
    std::vector<values::Value> values{};
    std::vector<Place> places{}; // of the values

    explicit Answer(std::size_t size) : bytes(size) {}

    // Writes a number into the record, in the gateway's byte order.
    template <std::integral Number>
    Answer& put(std::size_t offset, std::string_view name, Number number)
    {
        std::memcpy(bytes.data() + offset, &number, sizeof number);
        values.push_back({std::string(name), {}, {}});
        places.push_back({offset, read<Number>});
        read<Number>(values.back(), bytes.data() + offset);
        return *this;
    }

private:
    template <std::integral Number>
    static void read(values::Value& value, const std::uint8_t* from)
    {
        Number number{};
        std::memcpy(&number, from, sizeof number);
        using Widest = std::conditional_t<std::is_signed_v<Number>, std::int64_t, std::uint64_t>;
        value.text = std::to_string(number);
        value.data = static_cast<Widest>(number);
    }
};

} // namespace vorsim::gateway
