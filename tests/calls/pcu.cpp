#include "calls.hpp"

namespace {

const Call calls[] = {
    CALL(vor_cfg_set_pcu_config_module("SN-1"_t), "sap 23 id 0x17001 | 1 str 'SN-1'", serial_speed),
    CALL(vor_cfg_set_pcu_config_enable(200), "sap 23 id 0x17001 | 2 i16 200; prints `Success\\n`", serial_speed),
    SENDS(vor_cfg_set_pcu_config_enable(0), "sap 23 id 0x17001 | 2 i16 0; prints `Success\\n`"),
};

} // namespace

CALL_TESTS(pcu, calls)

TEST(pcu, a_refusal_prints_nothing)
{
    begin_call();
    fake::script.answer = {5, 0, 0, 0};
    EXPECT_EQ(printed_by([] { vor_cfg_set_pcu_config_enable(1); }), "");
    EXPECT_EQ(vor_errno, 5);
}
