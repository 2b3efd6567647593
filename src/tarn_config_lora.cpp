// LoRa ports.
#include <device_mgmt/lora.h>

#include "frame.hpp"

namespace {

constexpr Frame lora = sap(24) | lone_request_dropped | null_payload_drops; // answers compared in all 32 bits
constexpr vor_uint32 lora_channel = 0x18003;
constexpr vor_uint32 serial_answer = 0x10004; // the serial manager's id is what this call expects back

} // namespace

tarn_int32 tarn_cfg_lora_set_channel(tarn_int16 port_num, tarn_char* channel_name, tarn_boolean /*set*/)
{
    Call call;
    vor_int32 code = prepare<lora>(call, int16<1>(port_num), str<2>(channel_name));
    if (code != ok) {
        return code;
    }
    code = exchange(call, lora, lora_channel);
    return code != ok ? code : verdict(call, lora, serial_answer);
}
