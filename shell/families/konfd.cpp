#include <device_mgmt/konfd.h>

#include "rows/family.hpp"
#include "rows/konfd_query.hpp"

namespace vorcfg::rows {

namespace {

constexpr std::string_view address_line[] = {"interface {interface}/ip-address"};

} // namespace

FAMILY(konfd, part<vor_cfg_proto_init>("proto-init", "konfd query"),
       part<vor_cfg_proto_set_op>("proto-set-op", "konfd query"),
       part<vor_cfg_proto_set_pattern_string>("proto-set-pattern-string", "konfd query"),
       part<vor_cfg_proto_set_line_string>("proto-set-line-string", "konfd query"),
       part<vor_cfg_proto_set_priority_string>("proto-set-priority-string", "konfd query"),
       part<vor_cfg_proto_append_path_elm>("proto-append-path-elm", "konfd query"),
       part<vor_cfg_proto_cleanup>("proto-cleanup", "konfd query"),
       part<vor_cfg_proto_get_command>("proto-get-command", "konfd query, through vor_konfd_bi_dir_comm"),
       part<vor_konfd_bi_dir_comm>("bi-dir-comm", "konfd query"),
       call<vor_cfg_set_interface_ip>("set-interface-ip", {object("interface"), "ip_address"}, "eth0 192.168.2.10")
           .marked(cuts_link)
           .stores(address_line),
       konfd_query::row("query", "--set --line interface wlan0 --pattern interface wlan0"))

} // namespace vorcfg::rows
