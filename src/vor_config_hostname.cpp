// The gateway's host name (datamgr).
#include <device_mgmt/hostname.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame hostname_notice = sap(10) | one_way; // the payload pointer is passed to the serializer unchecked

} // namespace

vor_int32 vor_cfg_set_plat_hostname(vor_char* hostname)
{
    return request<hostname_notice, 0xa00a>(str<3>(hostname));
}
