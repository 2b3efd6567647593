#include "rows/family.hpp"

namespace vorcfg {

FAMILY(adc,
       call<vor_cfg_set_adc_config_polling>("set-config-polling",
                                            {object("adc_index"), object("channel_index"), "mode", "polling_freq",
                                             "option"},
                                            "1 2 1 1000 1")
           .undone_by("reset-config-mode"),
       stub<vor_cfg_set_adc_config_interrupt>("set-config-interrupt",
                                              {unsent("adc_index"), unsent("cahnnel_index"), unsent("mode"),
                                               unsent("interrupt_type"), unsent("option")},
                                              "1 2 2 1 1"),
       call<vor_cfg_get_adc_port_stats>("get-port-stats",
                                        {number("adc_index").fits<vor_uint16>().object(),
                                         number("channel_index").fits<vor_uint16>().object()},
                                        "1 2"),
       call<vor_cfg_set_adc_channel_name>("set-channel-name",
                                          {object("adc_index"), object("channel_index"), "name", "set"},
                                          "1 2 battery-voltage 1"),
       call<vor_cfg_reset_adc_config_mode>("reset-config-mode",
                                           {object("adc_index"), object("channel_index"), "mode", "option"}, "1 2 1 0"))

} // namespace vorcfg
