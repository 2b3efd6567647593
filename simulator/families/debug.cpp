#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange debug_level = one_way(27).to("system");
constexpr Exchange log_upload = one_way(0x2028);

constexpr Field set_option = int32(0, "set_option");
constexpr Field name = text(4, "name", 50);

// Fields that an option does not set hold what was in the sender's buffer, so each option reads only its own fields.
constexpr MessageRow rows[] = {
    {debug_level, "vor_cfg_set_debug_info", "module {task_name}",
     record(32, uint32(0, "log_level"), uint16(4, "sap_id"), text(6, "task_name", 25))},
    {log_upload, "vor_cfg_set_log_file", "log {name} server",
     record(260, set_option.holding(1), name, text(54, "ip_address", 50), text(104, "user_name", 50),
            text(154, "password", 50).secret())},
    {log_upload, "vor_cfg_set_log_file", "log {name} file",
     record(260, set_option.holding(2), name, text(204, "log_file_name", 50))},
    {log_upload, "vor_cfg_set_log_file", "log {name} frequency",
     record(260, set_option.holding(3), name, int32(256, "upload_frequency"))},
};

extern const Family debug{"platmgr", rows};

} // namespace vorsim::families
