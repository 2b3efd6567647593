/* ports.hpp: the counters that digital and analogue inputs answer alike. */
#pragma once

#include "readings.hpp"
#include "state.hpp"

namespace vorsim {

/* The 24-byte record; the mode is the one the port was last told. */
inline Reply port_statistics(std::uint16_t sap, const std::string& port, std::uint16_t logical_port,
                             std::string_view mode_name, const State& state, Readings& readings)
{
    const std::string stream = std::to_string(sap) + " " + port;
    Reply reply(24);
    reply.put(0, "logical_port_no", logical_port)
        .put(2, mode_name, static_cast<std::uint8_t>(state.latest(sap, port, "mode").value_or(0)))
        .put(8, "polling_count", readings.count(stream + " polls", 40))
        .put(16, "interrupt_count", readings.count(stream + " interrupts", 5));
    return reply;
}

} // namespace vorsim
