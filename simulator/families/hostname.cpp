#include "tables/families.hpp"

namespace vorsim::families {

constexpr MessageRow rows[] = {
    {one_way(0xa00a), "vor_cfg_set_plat_hostname", "gateway", chain(text(3, "hostname"))},
};

extern const Family hostname{"datamgr", rows};

} // namespace vorsim::families
