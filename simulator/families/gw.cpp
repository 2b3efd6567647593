#include "tables/families.hpp"

namespace vorsim::families {

constexpr MessageRow rows[] = {
    {request(0xa008).accepted_with(1), "vor_cfg_set_gw_device_latitude_config", "gateway",
     flag_and_chain("set", text(1, "latitude"))},
    {request(0xa009).accepted_with(1), "vor_cfg_set_gw_device_longitude_config", "gateway",
     flag_and_chain("set", text(2, "longitude"))},
};

extern const Family gw{"datamgr", rows};

} // namespace vorsim::families
