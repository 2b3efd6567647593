#include <device_mgmt/debug.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

namespace {

constexpr Choice switches[] = {{"off", 0}, {"on", 1}};
constexpr Choice levels[] = {{"error"}, {"warning"}, {"info"}, {"all"}, {"ipc", 0, true}};
constexpr Choice all_tasks = {"all", 0, false, true};
constexpr Choice tasks[] = {
    {"sysmgr"},    {"platmgr"}, {"restmgr"}, {"gpiomgr"}, {"adcmgr"},    {"blemgr"},    {"ethmgr"},
    {"svcmgr"},    {"datamgr"}, {"appmgr"},  {"mqttmgr"}, {"serialmgr"}, {"sensormgr"}, {"sub1gmgr"},
    {"modbusmgr"}, {"canmgr"},  {"ntpmgr"},  {"snmpmgr"}, all_tasks,
};
constexpr Choice log_options[] = {{"server", 1}, {"file-name", 2}, {"frequency", 3}};

constexpr RecordField log_level[] = {FIELD(LOG_INFO, log_level), FIELD(LOG_INFO, sap_id), FIELD(LOG_INFO, proc_name)};

// Fields that the option does not name hold stale bytes of the buffer.
constexpr RecordField log_file[] = {
    FIELD(LOG_UPLOAD_FILE_INFO, set_option),
    FIELD(LOG_UPLOAD_FILE_INFO, name),
    FIELD(LOG_UPLOAD_FILE_INFO, server).only_with(1),
    FIELD(LOG_UPLOAD_FILE_INFO, user_name).only_with(1),
    FIELD(LOG_UPLOAD_FILE_INFO, password).as(RecordField::Kind::secret).only_with(1),
    FIELD(LOG_UPLOAD_FILE_INFO, file_name).only_with(2),
    FIELD(LOG_UPLOAD_FILE_INFO, upload_frequency).only_with(3),
};

consteval Argument sent_for(const Choice& option, Argument argument)
{
    return argument.only_where("set_option", option);
}

} // namespace

FAMILY(debug,
       call<vor_cfg_set_debug_info>("set-info",
                                    {number("en_dis_flag").between(0, 1).choices_of(switches),
                                     word("task_name", tasks).object(), word("level", levels)},
                                    "1 ethmgr info")
           .sends(log_level),
       call<vor_cfg_set_log_file>("set-log-file",
                                  {number("set_option").between(1, 3).choices_of(log_options).object(),
                                   text("name").at_most(49).object(),
                                   sent_for(log_options[1], text("log_file_name").at_most(49)),
                                   sent_for(log_options[0], text("ip_address").at_most(49)),
                                   sent_for(log_options[0], text("user_name").at_most(49)),
                                   sent_for(log_options[0], text("password").secret().at_most(49)),
                                   sent_for(log_options[2], "upload_frequency")},
                                  "1 site-log \"\" 192.168.1.5 tower17 - 0")
           .sends(log_file))

} // namespace vorcfg::rows
