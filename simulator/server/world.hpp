// world.hpp: what the gateway is, however it is reached: what it was told, what disturbs it, what came of it.
#pragma once

#include <cstdint>
#include <string>

#include "faults/plan.hpp"
#include "gateway/gateway.hpp"
#include "konfd/konfd.hpp"
#include "record/counters.hpp"

namespace vor {
class Json;
}

namespace vorsim {

struct World {
    World(const Gateway::Settings& gateway_settings, const konfd::Konfd::Settings& konfd_settings)
        : gateway(gateway_settings), konfd(konfd_settings), faults(gateway_settings.seed),
          settings_of_gateway(gateway_settings), settings_of_konfd(konfd_settings)
    {
    }

    // All that it was told is forgotten, but not what disturbs it.
    void reset()
    {
        gateway = Gateway(settings_of_gateway);
        konfd = konfd::Konfd(settings_of_konfd);
        counters = {};
    }

    // What it holds.
    std::string text() const;
    vor::Json json(std::uint64_t lines_lost) const;

    Gateway gateway;
    konfd::Konfd konfd;
    faults::Plan faults;
    Counters counters{}; // since the last reset
    Gateway::Settings settings_of_gateway;
    konfd::Konfd::Settings settings_of_konfd;
};

} // namespace vorsim
