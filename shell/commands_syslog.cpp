#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_sysloginfo>("syslog", "set-sysloginfo", "mode ip_address@ port_number protocol",
                                    "Sets the syslog server.", "1 192.168.1.5 514 1"),
    local<vor_cfg_get_sysloginfo>("syslog", "get-sysloginfo", "ip_address> port_number> protocol>", "Does nothing.", "",
                                  does_nothing),
};

std::span<const Row> syslog_rows()
{
    return rows;
}

} // namespace vorcfg
