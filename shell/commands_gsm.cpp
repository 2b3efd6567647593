#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_gsm_set_access_point_name>("gsm", "set-access-point-name", "gsm_port access_point_name option",
                                               "Sets a port's access point name.", "1 iot.example 1"),
    command<vor_cfg_gsm_set_username>("gsm", "set-username", "gsm_port username option", "Sets a port's user name.",
                                      "1 tower17 1"),
    command<vor_cfg_gsm_set_password>("gsm", "set-password", "gsm_port password* option", "Sets a port's password.",
                                      "1 - 1"),
    command<vor_cfg_gsm_activate>("gsm", "activate", "gsm_port", "Activates a port.", "1"),
};

std::span<const Row> gsm_rows()
{
    return rows;
}

} // namespace vorcfg
