// counters.hpp: totals of everything that reached the gateway.
#pragma once

#include <cstdint>
#include <string>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vorsim::record {

struct Counters {
    std::uint64_t messages = 0; // to managers, malformed and foreign ones excluded
    std::uint64_t accepted = 0; // messages and konfd's texts
    std::uint64_t complained = 0;
    std::uint64_t invalid = 0;   // passed on, with a fault of the message, its answer or their manager
    std::uint64_t malformed = 0; // datagrams that are not messages
    std::uint64_t foreign = 0;   // unexpected answers, messages to another SAP
    std::uint64_t faulted = 0;

    // "2 messages, 1 refused"
    std::string text() const
    {
        std::string text = vor::counted(messages, "message");
        for (const auto& [number, what] : {std::pair{complained, "refused"},
                                           {invalid, "invalid"},
                                           {malformed, "malformed"},
                                           {foreign, "foreign"},
                                           {faulted, "faulted"}}) {
            text += number > 0 ? fmt::format(", {} {}", number, what) : "";
        }
        return text;
    }
};

} // namespace vorsim::record
