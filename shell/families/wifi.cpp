#include <device_mgmt/konfd.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

namespace {

constexpr std::string_view network[] = {"interface wlan0/ssid", "interface wlan0/ssid {ssid}/password"};

} // namespace

FAMILY_OF("konfd", wifi, "the stored Wi-Fi network",
          call<vor_cfg_set_wifi_ssid_password>("set-ssid-password", {"ssid", text("password").secret()},
                                               "\"Tower 17\" -")
              .marked(cuts_link)
              .stores(network))

} // namespace vorcfg::rows
