// The board's temperature (platmgr).
#include <device_mgmt/env.h>

#include "frame.hpp"

namespace {

constexpr Frame temperature = sap(2) | clears_errno | id_low_half; // lone request kept
constexpr vor_uint32 read_temperature = 0x2021;

} // namespace

vor_int32 vor_cfg_get_system_temperature(vor_int16* system_temp)
{
    Call call;
    vor_int32 code = take(call, temperature); // an empty request
    if (code != ok) {
        return code;
    }
    code = exchange(call, temperature, read_temperature);
    if (code != ok) {
        return code;
    }
    const void* status = nullptr;
    look(call, temperature, read_temperature, status);
    code = judge(call, temperature, status);
    if (code == ok) {
        VOR_ENV_INFO info{}; // an answer without a reading is 0
        if (const void* const reading = payload_of(call.response, sizeof(VOR_SDK_API_STATUS)); reading != nullptr) {
            __builtin_memcpy(&info, reading, sizeof info);
        }
        *system_temp = info.system_temperature;
    }
    vor_ipc_drop_msg_buf(&call.response);
    return code;
}
