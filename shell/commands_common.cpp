#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    part<vor_cfg_create_ipc_endpoint>("common", "create-ipc-endpoint", "Binds this process to the platform's messages.",
                                      "every call that asks a manager"),
    part<vor_cfg_remove_ipc_endpoint>("common", "remove-ipc-endpoint", "Unbinds the endpoint and forgets it.",
                                      "every call that asks a manager"),
    part<vor_cfg_get_ipc_endpoint>("common", "get-ipc-endpoint", "Tells the endpoint in use.",
                                   "every call that asks a manager"),
    part<vor_cfg_set_ipc_endpoint>("common", "set-ipc-endpoint", "Adopts an endpoint bound elsewhere.",
                                   "nothing here: the shell binds its own endpoint"),
    part<vor_cfg_create_sock_endpoint>("common", "create-sock-endpoint", "Connects to konfd.", "konfd query"),
    part<vor_cfg_remove_sock_endpoint>("common", "remove-sock-endpoint",
                                       "Closes the connection to konfd and forgets it.", "konfd query"),
    part<vor_cfg_get_sock_endpoint>("common", "get-sock-endpoint", "Tells the socket in use.", "konfd query"),
    local<vor_cfg_get_user_flag>("common", "get-user-flag", "", "Tells the application's byte.", ""),
    local<vor_cfg_set_user_flag>("common", "set-user-flag", "flag", "Stores a byte for the application.", "5"),
    local<vor_convert_mac_address_from_str_to_byte>("common", "convert-mac-address-from-str-to-byte",
                                                    "mac_addr_str mac_addr_byte>",
                                                    "Converts a MAC address text to bytes.", "00:1a:2b:3c:4d:5e"),
    local<ip_aton>("common", "ip-aton", "ip_address ip>", "Converts a dotted-quad text to an address.", "192.168.1.10"),
    command<vor_system_restart>("common", "system-restart", "time_till_restart",
                                "Announces a restart and starts the timer that reboots the gateway.", "30",
                                confirm | stays),
    part<vor_restart_timer>("common", "restart-timer", "Reboots the gateway now.",
                            "common system-restart, by its timer; never callable from the shell"),
};

std::span<const Row> common_rows()
{
    return rows;
}

} // namespace vorcfg
