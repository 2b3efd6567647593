#include <device_mgmt/konfd.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY_OF("konfd", wifi, "the stored Wi-Fi network",
          call<vor_cfg_set_wifi_ssid_password>("set-ssid-password", {"ssid", text("password").secret()},
                                               "\"Tower 17\" -")
              .marked(cuts_link)
              .on(Channel::konfd))

} // namespace vorcfg::rows
