#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_set_ntp_server>("time", "set-ntp-server", "server_name port_no option", "Names the NTP server.",
                                "pool.ntp.example 123 1"),
    command<vor_set_timezone_string>("time", "set-timezone-string", "time_zone_index option",
                                     "Selects the time zone by its index.", "44 1"),
};

std::span<const Row> time_rows()
{
    return rows;
}

} // namespace vorcfg
