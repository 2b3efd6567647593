// comparison.hpp: the messages that arrived against those that were expected.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "record/expectation.hpp"

namespace vorsim::record {

struct Manner {
    bool any_order = false;
    bool subset = false;           // others may have arrived as well
    bool allow_complaints = false; // those that are not expected are ignored

    bool operator==(const Manner&) const = default;
};

// A step from what was expected to what arrived, in order.
struct Step {
    enum class Kind : std::uint8_t { same, missing, unexpected, ignored };
    Kind kind{};
    std::size_t expected{}; // of same and missing
    std::size_t arrived{};  // of all but missing
};

struct Comparison {
    std::vector<Step> steps{};
    std::size_t missing = 0;
    std::size_t unexpected = 0;
    // Too many differ: the steps, where there are any, end with the first two that do, and the numbers are unknown.
    bool cut = false;

    bool holds() const { return missing == 0 && unexpected == 0 && !cut; }
};

bool is_complaint(const values::Record& record);

// With as few differences as possible.
Comparison compare(std::span<const Expectation> expected, std::span<const values::Record> arrived,
                   const Manner& manner);

} // namespace vorsim::record
