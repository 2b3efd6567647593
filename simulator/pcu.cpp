#include "families.hpp"

namespace vorsim {
namespace {

constexpr Message settings = asks(23, 0x17001);

constexpr Call calls[] = {
    {settings, "vor_cfg_set_pcu_config_module", "unit", chain(text(1, "serial_number"))},
    {settings, "vor_cfg_set_pcu_config_enable", "unit", chain(int16(2, "is_enabled"))},
};

} // namespace

const Family pcu{"pcu", calls};

} // namespace vorsim
