#include "families.hpp"

namespace vorsim {
namespace {

constexpr Call calls[] = {
    {asks(10, 0xa008).accepted_with(1), "vor_cfg_set_gw_device_latitude_config", "gateway",
     flag_and_chain("set", text(1, "latitude"))},
    {asks(10, 0xa009).accepted_with(1), "vor_cfg_set_gw_device_longitude_config", "gateway",
     flag_and_chain("set", text(2, "longitude"))},
};

} // namespace

const Family gw{"gw", calls};

} // namespace vorsim
