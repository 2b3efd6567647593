#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange settings = request(0x17001);

constexpr MessageRow rows[] = {
    {settings, "vor_cfg_set_pcu_config_module", "unit", chain(text(1, "serial_number"))},
    {settings, "vor_cfg_set_pcu_config_enable", "unit", chain(int16(2, "is_enabled"))},
};

extern const Family pcu{"pcumgr", rows};

} // namespace vorsim::families
