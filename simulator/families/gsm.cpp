#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange settings = request(0xc00a);
constexpr Field gsm_port = int16(1, "gsm_port");
constexpr Field option = int16(8, "option");

constexpr MessageRow rows[] = {
    {settings, "vor_cfg_gsm_set_access_point_name", "port {gsm_port}",
     chain(gsm_port, text(2, "access_point_name"), option)},
    {settings, "vor_cfg_gsm_set_username", "port {gsm_port}", chain(gsm_port, text(4, "username"), option)},
    {settings, "vor_cfg_gsm_set_password", "port {gsm_port}", chain(gsm_port, text(3, "password").secret(), option)},
    {request(0xc002), "vor_cfg_gsm_activate", "port {gsm_port}", chain(gsm_port)},
};

extern const Family gsm{"gsmmgr", rows};

} // namespace vorsim::families
