#include <device_mgmt/common.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

namespace {

constexpr RecordField notice[] = {record_field<vor_int16>("seconds", 0)};

} // namespace

FAMILY(common, part<vor_cfg_create_ipc_endpoint>("create-ipc-endpoint", "every call that asks a manager"),
       part<vor_cfg_remove_ipc_endpoint>("remove-ipc-endpoint", "every call that asks a manager"),
       part<vor_cfg_get_ipc_endpoint>("get-ipc-endpoint", "every call that asks a manager"),
       part<vor_cfg_set_ipc_endpoint>("set-ipc-endpoint", "no command: vorcfg binds its own endpoint"),
       part<vor_cfg_create_sock_endpoint>("create-sock-endpoint", "konfd query"),
       part<vor_cfg_remove_sock_endpoint>("remove-sock-endpoint", "konfd query"),
       part<vor_cfg_get_sock_endpoint>("get-sock-endpoint", "konfd query"),
       call<vor_cfg_get_user_flag>("get-user-flag").on(Channel::none),
       call<vor_cfg_set_user_flag>("set-user-flag", {"flag"}, "5").on(Channel::none),
       call<vor_convert_mac_address_from_str_to_byte>("convert-mac-address-from-str-to-byte",
                                                      {"mac_addr_str", result("mac_addr_byte")}, "00:1a:2b:3c:4d:5e")
           .on(Channel::none),
       call<ip_aton>("ip-aton", {"ip_address", result("ip")}, "192.168.1.10").on(Channel::none),
       call<vor_system_restart>("system-restart", {"time_till_restart"}, "30")
           .marked(confirmed | waits | acts)
           .sends(notice),
       part<vor_restart_timer>("restart-timer", "common system-restart, when its timer expires"))

} // namespace vorcfg::rows
