// The records that queries answer, field by field.
#include <arpa/inet.h>

#include "row.hpp"

namespace vorcfg {

Field number_field(std::string_view name, std::uint64_t value)
{
    return {std::string(name), std::to_string(value), true};
}

void tell(std::vector<Field>& fields, const GPIO_PIN_STATS& record)
{
    fields.push_back(number_field("logical_port_no", record.logical_port_no));
    fields.push_back(number_field("mode", record.mode));
    fields.push_back(number_field("polling_count", record.polling_count));
    fields.push_back(number_field("interrupt_count", record.interrupt_count));
}

void tell(std::vector<Field>& fields, const ADC_PIN_STATS& record)
{
    fields.push_back(number_field("logical_port_no", record.logical_port_no));
    fields.push_back(number_field("read_mode", record.read_mode));
    fields.push_back(number_field("polling_count", record.polling_count));
    fields.push_back(number_field("interrupt_count", record.interrupt_count));
}

void Slot<vor_ip_address*>::told(Returned& back, const Argument& argument) const
{
    char text[INET_ADDRSTRLEN];
    back.fields.push_back({std::string(argument.name), inet_ntop(AF_INET, &room, text, sizeof text), false});
}

void Slot<vor_uchar*>::told(Returned& back, const Argument& argument) const
{
    char text[18];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", room[0], room[1], room[2], room[3], room[4],
                  room[5]);
    back.fields.push_back({std::string(argument.name), text, false});
}

// The registers in the order of their addresses, as the record has them.
static constexpr const char* registers[] = {
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

void tell(std::vector<Field>& fields, const SUB1G_CONFIG_REG& record)
{
    const auto* const bytes = reinterpret_cast<const vor_uchar*>(&record);
    for (std::size_t i = 0; i < std::size(registers); i++) {
        fields.push_back(number_field(registers[i], bytes[i]));
    }
}

} // namespace vorcfg
