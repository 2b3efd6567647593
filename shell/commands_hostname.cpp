#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_plat_hostname>("hostname", "set-plat-hostname", "hostname", "Sets the host name.", "tower-17"),
};

std::span<const Row> hostname_rows()
{
    return rows;
}

} // namespace vorcfg
