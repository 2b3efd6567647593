#include <device_mgmt/env.h>

#include "calls.hpp"

namespace {

vor_int16 temperature = 0;

} // namespace

CALLS(env) = {
    CALL(vor_cfg_get_system_temperature(&temperature), "sap 2 id 0x2021 empty", answered_with_reading),
};

TEST(env, temperature_follows_the_status)
{
    begin_call();
    fake::script.answer = {0, 0, 0, 0, 0xfb, 0xff};
    EXPECT_EQ(outcome(vor_cfg_get_system_temperature(&temperature)), "0:eQPxaqa4p");
    EXPECT_EQ(temperature, -5);

    begin_call();
    fake::script.answer = {7, 0, 0, 0, 99, 0};
    EXPECT_EQ(outcome(vor_cfg_get_system_temperature(&temperature)), "-1:eQPxaqEp");
    EXPECT_EQ(temperature, -5) << "a refusal brings no temperature";
}

TEST(env, missing_temperature_reads_as_zero)
{
    begin_call();
    fake::script.null_payload = 2;
    fake::script.null_payload_from = 4;
    temperature = 21;
    EXPECT_EQ(outcome(vor_cfg_get_system_temperature(&temperature)), "0:eQPxaqa4p");
    EXPECT_EQ(temperature, 0);
}
