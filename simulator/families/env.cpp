#include "gateway/answer.hpp"
#include "gateway/measurements.hpp"
#include "tables/families.hpp"

namespace vorsim::families {
namespace {

// Tenths of a degree Celsius.
gateway::Answer temperature(const gateway::Decoded&, const gateway::State&, gateway::Measurements& measurements)
{
    gateway::Answer answer(6);
    answer.put(0, "status", std::int32_t{0})
        .put(4, "system_temperature", static_cast<std::int16_t>(measurements.measure("temperature", 415, 120, 6)));
    return answer;
}

constexpr Reading readings[] = {{"temperature", INT16_MIN, INT16_MAX}};

constexpr MessageRow rows[] = {
    {request(0x2021), "vor_cfg_get_system_temperature", "board", nothing, temperature},
};

} // namespace

extern const Family env{"platmgr", rows, readings};

} // namespace vorsim::families
