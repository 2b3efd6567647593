#include "families.hpp"

namespace vorsim {
namespace {

constexpr Message settings = asks(12, 0xc00a);
constexpr Field gsm_port = int16(1, "gsm_port");
constexpr Field option = int16(8, "option");

constexpr Call calls[] = {
    {settings, "vor_cfg_gsm_set_access_point_name", "port {gsm_port}",
     chain(gsm_port, text(2, "access_point_name"), option)},
    {settings, "vor_cfg_gsm_set_username", "port {gsm_port}", chain(gsm_port, text(4, "username"), option)},
    {settings, "vor_cfg_gsm_set_password", "port {gsm_port}", chain(gsm_port, text(3, "password").secret(), option)},
    {asks(12, 0xc002), "vor_cfg_gsm_activate", "port {gsm_port}", chain(gsm_port)},
};

} // namespace

const Family gsm{"gsm", calls};

} // namespace vorsim
