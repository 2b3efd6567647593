#include <device_mgmt/serial.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

FAMILY(
    serial, call<vor_cfg_set_serial_polling>("set-polling", {object("port_num"), "polling_freq", "option"}, "1 1000 1"),
    call<vor_cfg_set_serial_databits>("set-databits", {object("port_num"), "data_bits"}, "1 8").marked(answer_unread),
    call<vor_cfg_set_serial_stopbits>("set-stopbits", {object("port_num"), "stop_bits"}, "1 1").marked(answer_unread),
    call<vor_cfg_set_serial_speed>("set-speed", {object("port_num"), "speed"}, "1 9600"),
    call<vor_cfg_set_serial_flowcontrol>("set-flowcontrol", {object("port_num"), "flow_control"}, "1 0")
        .marked(answer_unread),
    call<vor_cfg_set_serial_parity>("set-parity", {object("port_num"), "parity"}, "1 0").marked(answer_unread),
    call<vor_cfg_serial_set_channel>("set-channel", {object("port_num"), "channel_name", unsent("set")},
                                     "1 rectifier-console 1"))

} // namespace vorcfg::rows
