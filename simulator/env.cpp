#include "families.hpp"
#include "readings.hpp"
#include "told.hpp"

namespace vorsim {
namespace {

/* Tenths of a degree Celsius. */
Reply temperature(const Told&, const State&, Readings& readings)
{
    Reply reply(6);
    reply.put(0, "status", std::int32_t{0})
        .put(4, "system_temperature", static_cast<std::int16_t>(readings.wander("temperature", 415, 120, 6)));
    return reply;
}

constexpr Call calls[] = {
    {asks(2, 0x2021), "vor_cfg_get_system_temperature", "board", nothing, {}, temperature},
};

} // namespace

const Family env{"env", calls};

} // namespace vorsim
