// The cellular data connection.
#include <device_mgmt/gsm.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame gsm = sap(12) | clears_errno; // answers compared in all 32 bits, lone request kept
constexpr MessageId gsm_setting = 0xc00a;     // the text's tag says which

} // namespace

vor_int32 vor_cfg_gsm_set_access_point_name(vor_uchar gsm_port, vor_char* access_point_name, vor_uchar option)
{
    return request<gsm, gsm_setting>(int16<1>(gsm_port), str<2>(access_point_name), int16<8>(option));
}

vor_int32 vor_cfg_gsm_set_username(vor_uchar gsm_port, vor_char* username, vor_uchar option)
{
    return request<gsm, gsm_setting>(int16<1>(gsm_port), str<4>(username), int16<8>(option));
}

vor_int32 vor_cfg_gsm_set_password(vor_uchar gsm_port, vor_char* password, vor_uchar option)
{
    return request<gsm, gsm_setting>(int16<1>(gsm_port), str<3>(password), int16<8>(option));
}

vor_int32 vor_cfg_gsm_activate(vor_uchar gsm_port)
{
    return request<gsm, 0xc002>(int16<1>(gsm_port));
}
