// port_statistics.hpp: the counters that digital and analogue inputs answer alike.
#pragma once

#include "gateway/answer.hpp"
#include "gateway/decode.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"

namespace vorsim::families {

// The 24-byte record; the mode is the one last set.
inline gateway::Answer port_statistics(const gateway::Decoded& decoded, std::int32_t logical_port,
                                       std::string_view mode_name, const gateway::State& state,
                                       gateway::Measurements& measurements)
{
    const std::int32_t mode = state.latest(decoded.sap, decoded.object, "mode").value_or(0);
    gateway::Answer answer(24);
    answer.put(0, "logical_port_no", static_cast<std::uint16_t>(logical_port))
        .put(2, mode_name, static_cast<std::uint8_t>(mode))
        .put(8, "polling_count", measurements.count(decoded.object + " polling_count", 40))
        .put(16, "interrupt_count", measurements.count(decoded.object + " interrupt_count", 5));
    return answer;
}

} // namespace vorsim::families
