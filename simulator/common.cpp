#include "families.hpp"

namespace vorsim {
namespace {

constexpr Call calls[] = {
    {tells(0, 12), "vor_system_restart", "gateway", record(2, int16(0, "time_till_restart"))},
};

} // namespace

const Family common{"common", calls};

} // namespace vorsim
