#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange settings = request(0x10004);
constexpr Field port_num = int16(1, "port_num");

constexpr MessageRow rows[] = {
    {settings, "vor_cfg_set_serial_polling", "port {port_num}",
     chain(port_num, uint32(17, "polling_freq"), int16(16, "option"))},
    {settings, "vor_cfg_set_serial_databits", "port {port_num}", chain(port_num, int16(3, "data_bits"))},
    {settings, "vor_cfg_set_serial_stopbits", "port {port_num}", chain(port_num, int16(4, "stop_bits"))},
    {settings, "vor_cfg_set_serial_speed", "port {port_num}", chain(port_num, int32(5, "speed"))},
    {settings, "vor_cfg_set_serial_flowcontrol", "port {port_num}", chain(port_num, int16(6, "flow_control"))},
    {settings, "vor_cfg_set_serial_parity", "port {port_num}", chain(port_num, int16(7, "parity"))},
    {settings, "vor_cfg_serial_set_channel", "port {port_num}", chain(port_num, text(2, "channel_name"))},
};

extern const Family serial{"serialmgr", rows};

} // namespace vorsim::families
