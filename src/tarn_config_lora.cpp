// LoRa ports.
#include <device_mgmt/lora.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame lora = sap(24) | lone_request_dropped | null_payload_drops; // answers compared in all 32 bits
constexpr MessageId lora_channel = 0x18003;
constexpr MessageId serial_answer = 0x10004; // the serial manager's id is what this call expects back

} // namespace

tarn_int32 tarn_cfg_lora_set_channel(tarn_int16 port_num, tarn_char* channel_name, tarn_boolean /*set*/)
{
    Exchange exchange;
    vor_int32 code = exchange.prepare<lora, lora_channel>(int16<1>(port_num), str<2>(channel_name));
    if (code != ok) {
        return code;
    }
    code = exchange.send_and_receive();
    exchange.id = serial_answer;
    return code != ok ? code : exchange.finish();
}
