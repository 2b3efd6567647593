// The power-control unit.
#include <device_mgmt/pcu.h>

#include <cstdio>

#include "frame.hpp"

namespace {

constexpr Frame pcu = sap(23) | clears_errno | lone_request_dropped; // answers compared in all 32 bits
constexpr vor_uint32 pcu_setting = 0x17001;

} // namespace

vor_int32 vor_cfg_set_pcu_config_module(vor_char* serial_number)
{
    return request<pcu, pcu_setting>(str<1>(serial_number));
}

vor_int32 vor_cfg_set_pcu_config_enable(vor_uchar is_enabled)
{
    Call call;
    vor_int32 code = prepare<pcu>(call, int16<2>(is_enabled));
    if (code != ok) {
        return code;
    }
    code = exchange(call, pcu, pcu_setting);
    if (code != ok) {
        return code;
    }
    const void* status = nullptr;
    look(call, pcu, pcu_setting, status);
    code = judge(call, pcu, status);
    if (code == ok) {
        std::puts("Success");
    }
    vor_ipc_drop_msg_buf(&call.response);
    return code;
}
