// The board's temperature (platmgr).
#include <device_mgmt/env.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame temperature = sap(2) | clears_errno | id_low_half; // lone request kept
constexpr MessageId read_temperature = 0x2021;

} // namespace

vor_int32 vor_cfg_get_system_temperature(vor_int16* system_temp)
{
    Exchange exchange;
    vor_int32 code = exchange.take_buffers<temperature, read_temperature>(); // an empty request
    if (code != ok) {
        return code;
    }
    code = exchange.send_and_receive();
    if (code != ok) {
        return code;
    }
    const void* status = nullptr;
    exchange.read_status(status);
    code = exchange.evaluate(status);
    if (code == ok) {
        VOR_ENV_INFO info{}; // an answer without a reading is 0
        if (const void* const reading = payload_of(exchange.response, sizeof(VOR_SDK_API_STATUS)); reading != nullptr) {
            __builtin_memcpy(&info, reading, sizeof info);
        }
        *system_temp = info.system_temperature;
    }
    vor_ipc_drop_msg_buf(&exchange.response);
    return code;
}
