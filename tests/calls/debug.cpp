#include <device_mgmt/debug.h>

#include "calls.hpp"

#include <string>

namespace {

template <int count>
char* letters()
{
    static std::string text(count, 'n');
    return text.data();
}

} // namespace

CALLS(debug) = {
    CALL(vor_cfg_set_debug_info(1, "ethmgr"_t, "info"_t),
         "sap 0 id 0x1b one-way record 32: 04 00 00 00 07 00 'ethmgr' 00 a5*19", sent_record_text_read_first),
    SENDS(vor_cfg_set_debug_info(0, "ethmgr"_t, "info"_t),
          "sap 0 id 0x1b one-way record 32: 00*4 07 00 'ethmgr' 00 a5*19"),
    SENDS(vor_cfg_set_debug_info(200, "modbusmgr"_t, "error"_t),
          "sap 0 id 0x1b one-way record 32: 01 00 00 00 14 00 'modbusmgr' 00 a5*16"),
    SENDS(vor_cfg_set_debug_info(1, "snmpmgr"_t, "warning"_t),
          "sap 0 id 0x1b one-way record 32: 02 00 00 00 15 00 'snmpmgr' 00 a5*18"),
    SENDS(vor_cfg_set_debug_info(1, "all"_t, "all"_t), "sap 0 id 0x1b one-way record 32: 07 00*5 'all' 00 a5*22"),
    SENDS(vor_cfg_set_debug_info(0, "canmgr"_t, "ipc"_t), "debug 19"),

    // What an option leaves out keeps what the buffer held; an over-long text runs on, but not past the record.
    CALL(vor_cfg_set_log_file(1, "site"_t, "gw.log"_t, "10.0.0.9"_t, "bob"_t, "secret"_t, 70000),
         "sap 2 id 0x2028 one-way record 260: 01 00 00 00 'site' 00 a5*45 '10.0.0.9' 00 a5*41 'bob' 00 a5*46 'secret' "
         "00 a5*99",
         sent_record_place_dropped),
    SENDS(vor_cfg_set_log_file(2, "site"_t, "gw.log"_t, "10.0.0.9"_t, "bob"_t, "secret"_t, 70000),
          "sap 2 id 0x2028 one-way record 260: 02 00 00 00 'site' 00 a5*195 'gw.log' 00 a5*49"),
    SENDS(vor_cfg_set_log_file(3, "site"_t, "gw.log"_t, "10.0.0.9"_t, "bob"_t, "secret"_t, 70000),
          "sap 2 id 0x2028 one-way record 260: 03 00 00 00 'site' 00 a5*247 70 11 01 00"),
    SENDS(vor_cfg_set_log_file(4, nullptr, nullptr, nullptr, nullptr, nullptr, 0),
          "sap 2 id 0x2028 one-way record 260: a5*260"),
    SENDS(vor_cfg_set_log_file(1, letters<60>(), ""_t, "10.0.0.9"_t, "bob"_t, letters<200>(), 0),
          "sap 2 id 0x2028 one-way record 260: 01 00 00 00 6e*50 '10.0.0.9' 00 6e 00 a5*39 'bob' 00 a5*46 6e*105 00"),
    SENDS(vor_cfg_set_log_file(2, letters<300>(), "gw.log"_t, ""_t, ""_t, ""_t, 0),
          "sap 2 id 0x2028 one-way record 260: 02 00 00 00 6e*200 'gw.log' 00 6e*48 00"),
    SENDS(vor_cfg_set_log_file(3, letters<300>(), ""_t, ""_t, ""_t, ""_t, 70000),
          "sap 2 id 0x2028 one-way record 260: 03 00 00 00 6e*252 70 11 01 00"),
};

TEST(debug, number_per_manager)
{
    std::string numbers;
    for (const char* name :
         {"sysmgr", "platmgr", "restmgr", "gpiomgr", "adcmgr", "blemgr", "ethmgr", "svcmgr", "datamgr", "appmgr",
          "mqttmgr", "serialmgr", "sensormgr", "sub1gmgr", "modbusmgr", "canmgr", "ntpmgr", "snmpmgr", "all"}) {
        begin_call();
        EXPECT_EQ(outcome(vor_cfg_set_debug_info(1, const_cast<char*>(name), "ipc"_t)), "0:d") << name;
        numbers += fake::events() + " ";
    }
    EXPECT_EQ(numbers,
              "debug 1 debug 2 debug 3 debug 4 debug 5 debug 6 debug 7 debug 9 debug 10 debug 13 debug 15 debug 16 "
              "debug 14 debug 8 debug 20 debug 19 debug 22 debug 21 debug 0 ");
}

TEST(debug, level_is_checked_before_the_name)
{
    const struct {
        const char *name, *level, *outcome;
    } rows[] = {
        {"ethmgr", "debug", "-1:"}, {"foomgr", "info", "-4:"},  {"foomgr", "debug", "-1:"},
        {"foomgr", "ipc", "-4:"},   {"ethmgr", "Info", "-1:"},  {"ethmgr", "infos", "-1:"},
        {"ethmg", "info", "-4:"},   {"ethmgr ", "info", "-4:"}, {"", "", "-1:"},
    };
    for (const auto& row : rows) {
        begin_call();
        EXPECT_EQ(outcome(vor_cfg_set_debug_info(1, const_cast<char*>(row.name), const_cast<char*>(row.level))),
                  row.outcome)
            << row.name << " " << row.level;
        EXPECT_EQ(fake::events(), "nothing");
    }
}
