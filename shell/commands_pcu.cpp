#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_pcu_config_module>("pcu", "set-config-module", "serial_number", "Registers the unit's module.",
                                           "PCU-2291-07"),
    command<vor_cfg_set_pcu_config_enable>("pcu", "set-config-enable", "is_enabled", "Switches the unit.", "1"),
};

std::span<const Row> pcu_rows()
{
    return rows;
}

} // namespace vorcfg
