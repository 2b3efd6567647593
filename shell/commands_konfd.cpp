#include "commands.hpp"

namespace vorcfg {

static constexpr Row wifi[] = {
    stored<vor_cfg_set_wifi_ssid_password>("wifi", "set-ssid-password", "ssid password*",
                                           "Stores the Wi-Fi network of wlan0.", "\"Tower 17\" -"),
};

static constexpr Row rows[] = {
    part<vor_cfg_proto_init>("konfd", "proto-init", "Makes an empty query.", "konfd query"),
    part<vor_cfg_proto_set_op>("konfd", "proto-set-op", "Sets what the query does.", "konfd query"),
    part<vor_cfg_proto_set_pattern_string>(
        "konfd", "proto-set-pattern-string",
        "Appends to the pattern of lines the query is about, between the anchors ^ and $.", "konfd query"),
    part<vor_cfg_proto_set_line_string>("konfd", "proto-set-line-string",
                                        "Appends to the line the query stores: key, a blank, value.", "konfd query"),
    part<vor_cfg_proto_set_priority_string>("konfd", "proto-set-priority-string", "Appends to the query's priority.",
                                            "konfd query"),
    part<vor_cfg_proto_append_path_elm>("konfd", "proto-append-path-elm",
                                        "Adds one element at the end of the query's path.", "konfd query"),
    part<vor_cfg_proto_cleanup>("konfd", "proto-cleanup", "Releases a query.", "konfd query"),
    part<vor_cfg_proto_get_command>("konfd", "proto-get-command", "Renders a query as konfd's command text.",
                                    "konfd query, through vor_konfd_bi_dir_comm"),
    part<vor_konfd_bi_dir_comm>("konfd", "bi-dir-comm", "Sends a query to konfd and hears its verdict.", "konfd query"),
    stored<vor_cfg_set_interface_ip>("konfd", "set-interface-ip", "interface ip_address",
                                     "Stores an interface's address.", "eth1 192.168.2.10"),
};

std::span<const Row> konfd_rows()
{
    return rows;
}

std::span<const Row> wifi_rows()
{
    return wifi;
}

} // namespace vorcfg
