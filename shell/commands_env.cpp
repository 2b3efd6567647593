#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_get_system_temperature>("env", "get-system-temperature", "system_temp>",
                                            "Reads the board's temperature.", ""),
};

std::span<const Row> env_rows()
{
    return rows;
}

} // namespace vorcfg
