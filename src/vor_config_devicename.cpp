// The gateway device's identity, kept by the tower-monitoring manager.
#include <device_mgmt/devicename.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame device_identity = sap(240) | clears_errno; // answers compared in all 32 bits, lone request kept

} // namespace

vor_int32 vor_cfg_set_device_name(vor_char* device_name, vor_uchar /*option*/)
{
    return request<device_identity, 0x15014>(str<27>(device_name));
}

vor_int32 vor_cfg_set_device_location(vor_char* device_location, vor_uchar /*option*/)
{
    return request<device_identity, 0x15015>(str<28>(device_location));
}

vor_int32 vor_cfg_set_device_id(vor_uint32 sensor_id, vor_uchar /*option*/)
{
    return request<device_identity, 0x15016>(int32<29>(sensor_id));
}
