#include <device_mgmt/sub1g.h>

#include "calls.hpp"

namespace {

SUB1G_CONFIG_REG* register_file = nullptr;

} // namespace

CALLS(sub1g) = {
    CALL(vor_cfg_set_sub1g_frequency(200, -3), "sap 8 id 0x8004 | 1 i16 200 | 2 i16 -3", lone_dropped_low_half),
    CALL(vor_cfg_sub1g_set_channel(200, "s"_t, 255, "level"_t),
         "sap 8 id 0x8004 | 1 i16 200 | 3 str 's' | 4 i16 255 | 5 str 'level'", lone_dropped_low_half_place_dropped),
    CALL(vor_cfg_get_reg_values(&register_file), "sap 8 id 0x8009 empty", fetched_by_empty),
    CALL(vor_cfg_set_sub1g_power(200, -3), "sap 8 id 0x800b | 1 i16 200 | 9 i16 -3", lone_dropped_low_half),
};

TEST(sub1g, registers_come_only_from_a_matching_answer)
{
    const struct {
        const char* fault;
        void (*script)();
        const char* stored;
    } rows[] = {
        {"none", [] {}, "answer"},
        {"no payload", [] { fake::script.null_payload = 2; }, "null"},
        {"another id", [] { fake::script.answer_id = 0x8004; }, "stray"},
    };
    for (const auto& row : rows) {
        begin_call();
        SUB1G_CONFIG_REG before = {};
        SUB1G_CONFIG_REG* stored = &before;
        row.script();
        vor_cfg_get_reg_values(&stored);
        EXPECT_EQ(shown(stored), row.stored) << row.fault;
    }
}
