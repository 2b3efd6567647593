#include <device_mgmt/gpio.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

void append_fields(Fields& fields, const GPIO_PIN_STATS& record)
{
    append_field(fields, "logical_port_no", record.logical_port_no);
    append_field(fields, "mode", record.mode);
    append_field(fields, "polling_count", record.polling_count);
    append_field(fields, "interrupt_count", record.interrupt_count);
}

namespace {

constexpr RecordField output[] = {FIELD(VOR_GPIO_PORT_SET, gpio_sw_port), FIELD(VOR_GPIO_PORT_SET, value)};
constexpr RecordField pin[] = {FIELD(GPIO_PIN_NO, logical_port_no)};

} // namespace

FAMILY(gpio, call<vor_cfg_set_gpio_direction>("set-direction", {object("port_num"), "direction", "option"}, "3 1 0"),
       call<vor_cfg_set_gpio_config_interrupt>("set-config-interrupt",
                                               {object("port_num"), "mode", "interrupt_type", "option"}, "3 2 1 1")
           .changes("mode"),
       call<vor_cfg_set_gpio_config_polling>("set-config-polling",
                                             {object("port_num"), "mode", "polling_freq", "option"}, "4 1 500 1")
           .changes("mode"),
       call<vor_cfg_set_gpio_channel_name>("set-channel-name", {object("gpio_port"), "name", "set"}, "3 door 1"),
       call<vor_cfg_set_gpio_value>(
           "set-value", {number("port_num").fits<vor_uint16>().object(), number("value").fits<vor_uint16>()}, "5 1")
           .sends(output),
       call<vor_cfg_get_gpio_port_stats>("get-port-stats", {number("port_num").fits<vor_uint16>().object()}, "3")
           .sends(pin))

} // namespace vorcfg::rows
