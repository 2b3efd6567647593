// The gateway's clock (ntpmgr).
#include <device_mgmt/time.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame ntp = sap(22) | clears_errno; // answers compared in all 32 bits, lone request kept

} // namespace

vor_int32 vor_set_ntp_server(vor_char* server_name, vor_uint32 port_no, vor_int32 option)
{
    return request<ntp, 0x16001>(str<1>(server_name), int32<2>(port_no), low16<4>(option));
}

vor_int32 vor_set_timezone_string(vor_uint32 time_zone_index, vor_int32 option)
{
    return request<ntp, 0x16002>(int32<3>(time_zone_index), low16<4>(option));
}
