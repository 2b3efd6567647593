// The gateway's location (datamgr). Status 1 is success, only here.
#include <device_mgmt/gw.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame position = sap(10) | flag_byte | null_payload_drops;
constexpr MessageId latitude_setting = 0xa008;
constexpr MessageId longitude_setting = 0xa009;

constexpr vor_int32 accepted_position = 1;
constexpr vor_int32 latitude_refused = -1001;
constexpr vor_int32 longitude_refused = -1002;

// No id is compared, vor_errno is not changed, and a refused exchange is -4.
vor_int32 send_and_finish(Exchange& exchange, vor_int32 refused_code)
{
    ++exchange.length; // the flag leads the payload
    if (exchange.send_and_receive() != ok) {
        return no_status;
    }
    vor_int32 code = no_status;
    if (const void* const status = payload_of(exchange.response); status != nullptr) {
        code = status_at(status) == accepted_position ? ok : refused_code;
    }
    exchange.drop_buffers();
    return code;
}

} // namespace

vor_int32 vor_cfg_set_gw_device_latitude_config(vor_boolean set, vor_char* latitude)
{
    Exchange exchange;
    const vor_int32 code = exchange.prepare<position, latitude_setting>(flag(set == 1), str<1>(latitude));
    return code != ok ? code : send_and_finish(exchange, latitude_refused);
}

vor_int32 vor_cfg_set_gw_device_longitude_config(vor_boolean set, vor_char* longitude)
{
    Exchange exchange;
    const vor_int32 code = exchange.prepare<position, longitude_setting>(flag(set == 1), str<2>(longitude));
    return code != ok ? code : send_and_finish(exchange, longitude_refused);
}
