#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_debug_info>("debug", "set-info", "en_dis_flag task_name level",
                                    "Switches a manager's debug output.", "1 ethmgr info"),
    command<vor_cfg_set_log_file>(
        "debug", "set-log-file", "set_option name log_file_name ip_address user_name password* upload_frequency",
        "Sets up the upload of the platform's log file.", "1 site-log \"\" 192.168.1.5 tower17 - 0"),
};

std::span<const Row> debug_rows()
{
    return rows;
}

} // namespace vorcfg
