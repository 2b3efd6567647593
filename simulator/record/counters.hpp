// counters.hpp: what came of everything that reached the gateway.
#pragma once

#include <cstdint>
#include <string>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vorsim {

struct Counters {
    std::uint64_t messages = 0; // that managers judged
    std::uint64_t accepted = 0; // of messages and of konfd's texts
    std::uint64_t complained = 0;
    std::uint64_t malformed = 0; // datagrams that are no message
    std::uint64_t foreign = 0;   // messages that no manager is to judge
    std::uint64_t faulted = 0;   // disturbed on command

    bool blameless() const { return complained + malformed + foreign == 0; }

    // "2 messages, 0 complaints", and what else there was.
    std::string text() const
    {
        std::string text =
            fmt::format("{}, {}", vor::counted(messages, "message"), vor::counted(complained, "complaint"));
        for (const auto& [number, what] :
             {std::pair{malformed, "malformed"}, {foreign, "foreign"}, {faulted, "faulted"}}) {
            text += number > 0 ? fmt::format(", {} {}", number, what) : "";
        }
        return text;
    }
};

} // namespace vorsim
