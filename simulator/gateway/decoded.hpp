// decoded.hpp: one message as its manager understands it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tables/row.hpp"
#include "values/value.hpp"

namespace vorsim {

struct Decoded {
    std::uint16_t sap{}; // the manager it reached
    const Row* row{};
    std::string object{};
    std::vector<Value> values{};

    // A number the message is known to carry.
    std::int32_t number(std::string_view name) const;
};

} // namespace vorsim
