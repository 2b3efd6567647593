#include <device_mgmt/adc.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

void append_fields(Fields& fields, const ADC_PIN_STATS& record)
{
    append_field(fields, "logical_port_no", record.logical_port_no);
    append_field(fields, "read_mode", record.read_mode);
    append_field(fields, "polling_count", record.polling_count);
    append_field(fields, "interrupt_count", record.interrupt_count);
}

namespace {

constexpr RecordField pin[] = {FIELD(ADC_PIN_NO, adc_index), FIELD(ADC_PIN_NO, channel_index)};

} // namespace

FAMILY(adc,
       call<vor_cfg_set_adc_config_polling>("set-config-polling",
                                            {object("adc_index"), object("channel_index"), "mode", "polling_freq",
                                             "option"},
                                            "1 2 1 1000 1")
           .changes("mode"),
       stub<vor_cfg_set_adc_config_interrupt>("set-config-interrupt",
                                              {unsent("adc_index"), unsent("cahnnel_index"), unsent("mode"),
                                               unsent("interrupt_type"), unsent("option")},
                                              "1 2 2 1 1"),
       call<vor_cfg_get_adc_port_stats>("get-port-stats",
                                        {number("adc_index").fits<vor_uint16>().object(),
                                         number("channel_index").fits<vor_uint16>().object()},
                                        "1 2")
           .sends(pin),
       call<vor_cfg_set_adc_channel_name>("set-channel-name",
                                          {object("adc_index"), object("channel_index"), "name", "set"},
                                          "1 2 battery-voltage 1"),
       call<vor_cfg_reset_adc_config_mode>("reset-config-mode",
                                           {object("adc_index"), object("channel_index"), "mode", "option"}, "1 2 1 0")
           .changes("mode"))

} // namespace vorcfg::rows
