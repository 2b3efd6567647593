// What calls write into their results and answer as records, field by field.
#include <arpa/inet.h>

#include <fmt/core.h>

#include "rows/binding.hpp"

namespace vorcfg {

namespace {

Field counted(std::string_view name, auto number)
{
    return {std::string(name), std::to_string(number)};
}

} // namespace

void append_field(Fields& fields, std::string_view name, const vor_int16* number)
{
    fields.push_back(counted(name, *number));
}

void append_field(Fields& fields, std::string_view name, const vor_uint16* number)
{
    fields.push_back(counted(name, *number));
}

void append_field(Fields& fields, std::string_view name, const vor_ip_address* address)
{
    char text[INET_ADDRSTRLEN];
    fields.push_back({std::string(name), inet_ntop(AF_INET, address, text, sizeof text), Field::Kind::word});
}

void append_field(Fields& fields, std::string_view name, const vor_uchar* mac)
{
    fields.push_back(
        {std::string(name),
         fmt::format("{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]),
         Field::Kind::word});
}

void append_fields(Fields& fields, const GPIO_PIN_STATS& record)
{
    fields.push_back(counted("logical_port_no", record.logical_port_no));
    fields.push_back(counted("mode", record.mode));
    fields.push_back(counted("polling_count", record.polling_count));
    fields.push_back(counted("interrupt_count", record.interrupt_count));
}

void append_fields(Fields& fields, const ADC_PIN_STATS& record)
{
    fields.push_back(counted("logical_port_no", record.logical_port_no));
    fields.push_back(counted("read_mode", record.read_mode));
    fields.push_back(counted("polling_count", record.polling_count));
    fields.push_back(counted("interrupt_count", record.interrupt_count));
}

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
        fields.push_back(counted(registers[i], bytes[i]));
    }
}

} // namespace vorcfg
