#include <device_mgmt/lora.h>

#include "calls.hpp"

CALLS(lora) = {
    CALL(tarn_cfg_lora_set_channel(200, "meter"_t, 1), "sap 24 id 0x18003 | 1 i16 200 | 2 str 'meter'",
         lone_dropped_errno_left, 0x10004),
    SENDS(tarn_cfg_lora_set_channel(-3, "meter"_t, 0), "sap 24 id 0x18003 | 1 i16 -3 | 2 str 'meter'"),
};

TEST(lora, answer_under_request_id_is_not_read)
{
    begin_call();
    EXPECT_EQ(outcome(tarn_cfg_lora_set_channel(1, "meter"_t, 1)), "-4:QP0cxqp");
}
