// The power-control unit.
#include <device_mgmt/pcu.h>

#include <cstdio>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame pcu = sap(23) | clears_errno | lone_request_dropped; // answers compared in all 32 bits
constexpr MessageId pcu_setting = 0x17001;

} // namespace

vor_int32 vor_cfg_set_pcu_config_module(vor_char* serial_number)
{
    return request<pcu, pcu_setting>(str<1>(serial_number));
}

vor_int32 vor_cfg_set_pcu_config_enable(vor_uchar is_enabled)
{
    Exchange exchange;
    vor_int32 code = exchange.prepare<pcu, pcu_setting>(int16<2>(is_enabled));
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
        std::puts("Success");
    }
    vor_ipc_drop_msg_buf(&exchange.response);
    return code;
}
