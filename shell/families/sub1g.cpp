#include <device_mgmt/sub1g.h>

#include "rows/family.hpp"

namespace vorcfg::rows {

namespace {

// The registers in the order of their addresses, as the record has them.
constexpr const char* registers[] = {
    "iocfg2",     "iocfg1",     "iocfg0",     "fifothr",   "sync1",      "sync0",      "pktlen",     "pktctrl1",
    "pktctrl0",   "addr",       "channr",     "fsctrl1",   "fsctrl0",    "freq2",      "freq1",      "freq0",
    "mdmcfg4",    "mdmcfg3",    "mdmcfg2",    "mdmcfg1",   "mdmcfg0",    "deviatn",    "mcsm2",      "mcsm1",
    "mcsm0",      "foccfg",     "bscfg",      "agcctrl2",  "agcctrl1",   "agcctrl0",   "rsrvd_0x20", "frend1",
    "frend0",     "fscal3",     "fscal2",     "fscal1",    "fscal0",     "rsrvd_0x29", "rsrvd_0x2A", "rsrvd_0x2B",
    "test2",      "test1",      "test0",      "partnum",   "version",    "freqest",    "crc_reg",    "rssi",
    "marcstate",  "rsrvd_0x36", "rsrvd_0x37", "pktstatus", "rsrvd_0x39", "txbytes",    "rxbytes",    "rsrvd_0x3C",
    "rsrvd_0x3D", "pa_table",
};
static_assert(std::size(registers) == sizeof(SUB1G_CONFIG_REG), "one name per byte of the record");

} // namespace

void append_fields(Fields& fields, const SUB1G_CONFIG_REG& record)
{
    const auto* const bytes = reinterpret_cast<const vor_uchar*>(&record);
    for (std::size_t i = 0; i < std::size(registers); i++) {
        append_field(fields, registers[i], bytes[i]);
    }
}

FAMILY(sub1g, call<vor_cfg_set_sub1g_frequency>("set-frequency", {object("interface_num"), "frequency"}, "1 868"),
       call<vor_cfg_sub1g_set_channel>("set-channel",
                                       {object("port_num"), object("stream_name"), "classifier", "channel_name"},
                                       "1 meters 2 meter-readings"),
       call<vor_cfg_get_reg_values>("get-reg-values", {result("sub1g_reg")}, ""),
       call<vor_cfg_set_sub1g_power>("set-power", {object("interface_num"), "power"}, "1 10"))

} // namespace vorcfg::rows
