#include "tables/families.hpp"

namespace vorsim::families {

constexpr MessageRow rows[] = {
    {one_way(12), "vor_system_restart", "gateway", record(2, int16(0, "time_till_restart"))},
};

extern const Family common{"system", rows};

} // namespace vorsim::families
