// Where the gateway stands (datamgr). Status 1 is success here, and only here.
#include <device_mgmt/gw.h>

#include "frame.hpp"

namespace {

constexpr Frame place = sap(10) | flag_byte | null_payload_drops;
constexpr vor_uint32 latitude_setting = 0xa008;
constexpr vor_uint32 longitude_setting = 0xa009;

constexpr vor_int32 accepted_place = 1;
constexpr vor_int32 latitude_refused = -1001;
constexpr vor_int32 longitude_refused = -1002;

vor_boolean flag(vor_boolean set)
{
    return set == 1 ? 1 : 0;
}

// No id is compared, vor_errno stays out of it, and a refused exchange is -4.
vor_int32 conclude_place(Call& call, vor_uint32 id, vor_int32 refused_code)
{
    ++call.length; // the flag leads the payload
    if (exchange(call, place, id) != ok) {
        return no_status;
    }
    vor_int32 code = no_status;
    if (const void* const status = payload_of(call.response); status != nullptr) {
        code = status_at(status) == accepted_place ? ok : refused_code;
    }
    drop_both(call);
    return code;
}

} // namespace

vor_int32 vor_cfg_set_gw_device_latitude_config(vor_boolean set, vor_char* latitude)
{
    Call call;
    const vor_int32 code = prepare<place>(call, option(flag(set)), str<1>(latitude));
    return code != ok ? code : conclude_place(call, latitude_setting, latitude_refused);
}

vor_int32 vor_cfg_set_gw_device_longitude_config(vor_boolean set, vor_char* longitude)
{
    Call call;
    const vor_int32 code = prepare<place>(call, option(flag(set)), str<2>(longitude));
    return code != ok ? code : conclude_place(call, longitude_setting, longitude_refused);
}
