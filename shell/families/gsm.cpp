#include <device_mgmt/gsm.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(gsm,
       call<vor_cfg_gsm_set_access_point_name>("set-access-point-name",
                                               {object("gsm_port"), "access_point_name", "option"}, "1 iot.example 1"),
       call<vor_cfg_gsm_set_username>("set-username", {object("gsm_port"), "username", "option"}, "1 tower17 1"),
       call<vor_cfg_gsm_set_password>("set-password", {object("gsm_port"), text("password").secret(), "option"},
                                      "1 - 1"),
       call<vor_cfg_gsm_activate>("activate", {object("gsm_port")}, "1").marked(acts))

} // namespace vorcfg::rows
