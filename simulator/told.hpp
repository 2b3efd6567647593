/* told.hpp: one message as its manager understands it. */
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "table.hpp"

namespace vorsim {

using Json = nlohmann::ordered_json;

/* A named value, ready for people and for programs. Secrets are masked already. */
struct Value {
    std::string_view name;
    std::string shown;
    Json data;
    bool in_object{}; // told by the object's own text
};

struct Told {
    const Call* call{};
    std::string object{};
    std::vector<Value> values{};

    /* A number the message is known to carry. */
    std::int32_t number(std::string_view name) const;
};

Json json_of(const std::vector<Value>& values);
/* "name=value ..." of what the object does not tell. */
std::string line_of(const std::vector<Value>& values);

/* A query's answer: the record and what it says. */
struct Reply {
    std::vector<std::uint8_t> bytes{};
    std::vector<Value> values{};

    explicit Reply(std::size_t size) : bytes(size) {}

    /* Writes a number into the record, in the gateway's byte order. */
    template <class Number>
    Reply& put(std::size_t offset, std::string_view name, Number number)
    {
        const auto* const from = reinterpret_cast<const std::uint8_t*>(&number);
        std::copy(from, from + sizeof number, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
        values.push_back({name, std::to_string(number), number});
        return *this;
    }
};

} // namespace vorsim
