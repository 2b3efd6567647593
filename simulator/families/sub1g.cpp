#include <algorithm>

#include "gateway/answer.hpp"
#include "gateway/measurements.hpp"
#include "tables/families.hpp"

namespace vorsim::families {
namespace {

constexpr Exchange settings = request(0x8004);
constexpr Field interface_num = int16(1, "interface_num");

struct Register {
    std::string_view name;
    std::uint8_t at_rest;
};

// A configured receiver, register by register in address order.
constexpr Register registers[] = {
    {"iocfg2", 0x29},     {"iocfg1", 0x2e},     {"iocfg0", 0x06},     {"fifothr", 0x47},    {"sync1", 0xd3},
    {"sync0", 0x91},      {"pktlen", 0x3d},     {"pktctrl1", 0x04},   {"pktctrl0", 0x05},   {"addr", 0x00},
    {"channr", 0x00},     {"fsctrl1", 0x06},    {"fsctrl0", 0x00},    {"freq2", 0x21},      {"freq1", 0x62},
    {"freq0", 0x76},      {"mdmcfg4", 0x2d},    {"mdmcfg3", 0x3b},    {"mdmcfg2", 0x13},    {"mdmcfg1", 0x22},
    {"mdmcfg0", 0xf8},    {"deviatn", 0x47},    {"mcsm2", 0x07},      {"mcsm1", 0x30},      {"mcsm0", 0x18},
    {"foccfg", 0x1d},     {"bscfg", 0x1c},      {"agcctrl2", 0xc7},   {"agcctrl1", 0x00},   {"agcctrl0", 0xb2},
    {"rsrvd_0x20", 0xfb}, {"frend1", 0xb6},     {"frend0", 0x10},     {"fscal3", 0xea},     {"fscal2", 0x2a},
    {"fscal1", 0x00},     {"fscal0", 0x1f},     {"rsrvd_0x29", 0x59}, {"rsrvd_0x2A", 0x7f}, {"rsrvd_0x2B", 0x3f},
    {"test2", 0x81},      {"test1", 0x35},      {"test0", 0x09},      {"partnum", 0x00},    {"version", 0x14},
    {"freqest", 0x00},    {"crc_reg", 0x00},    {"rssi", 0x00},       {"marcstate", 0x0d},  {"rsrvd_0x36", 0x00},
    {"rsrvd_0x37", 0x00}, {"pktstatus", 0x10},  {"rsrvd_0x39", 0x00}, {"txbytes", 0x00},    {"rxbytes", 0x00},
    {"rsrvd_0x3C", 0x00}, {"rsrvd_0x3D", 0x00}, {"pa_table", 0xc6}};

constexpr auto readings = [] {
    std::array<Reading, std::size(registers)> all{};
    std::ranges::transform(registers, all.begin(), [](const Register& one) {
        const bool counts = one.name == "txbytes" || one.name == "rxbytes";
        return Reading{one.name, 0, counts ? 63U : 255U, counts};
    });
    return all;
}();

gateway::Answer register_values(const gateway::Decoded&, const gateway::State&, gateway::Measurements& measurements)
{
    gateway::Answer answer(std::size(registers));
    const auto byte = [](auto value) { return static_cast<std::uint8_t>(value); };
    std::ranges::transform(registers, answer.bytes.begin(),
                           [&](const Register& one) { return byte(measurements.constant(one.name, one.at_rest)); });
    answer.put(45, "freqest", byte(measurements.measure("freqest", 0, 12, 3)))
        .put(46, "crc_reg", byte(measurements.measure("crc_reg", 176, 30, 7)))
        .put(47, "rssi", byte(measurements.measure("rssi", 96, 60, 9)))
        .put(53, "txbytes", byte(measurements.count("txbytes", 9) % 64))
        .put(54, "rxbytes", byte(measurements.count("rxbytes", 17) % 64));
    return answer;
}

constexpr MessageRow rows[] = {
    {settings, "vor_cfg_set_sub1g_frequency", "interface {interface_num}", chain(interface_num, int16(2, "frequency"))},
    {settings, "vor_cfg_sub1g_set_channel", "port {port_num} stream {stream_name}",
     chain(int16(1, "port_num"), text(3, "stream_name"), int16(4, "classifier"), text(5, "channel_name"))},
    {request(0x8009), "vor_cfg_get_reg_values", "registers", nothing, register_values},
    {request(0x800b), "vor_cfg_set_sub1g_power", "interface {interface_num}", chain(interface_num, int16(9, "power"))},
};

} // namespace

extern const Family sub1g{"sub1gmgr", rows, readings};

} // namespace vorsim::families
