#include "gateway/answer.hpp"
#include "gateway/measurements.hpp"
#include "tables/families.hpp"

namespace vorsim::families {
namespace {

constexpr Exchange settings = request(0x8004);
constexpr Field interface_num = int16(1, "interface_num");

// A configured receiver at rest, register by register in address order.
constexpr std::uint8_t at_rest[58] = {
    0x29, 0x2e, 0x06, 0x47, 0xd3, 0x91, 0x3d, 0x04, 0x05, 0x00, 0x00, 0x06, 0x00, 0x21, 0x62,
    0x76, 0x2d, 0x3b, 0x13, 0x22, 0xf8, 0x47, 0x07, 0x30, 0x18, 0x1d, 0x1c, 0xc7, 0x00, 0xb2,
    0xfb, 0xb6, 0x10, 0xea, 0x2a, 0x00, 0x1f, 0x59, 0x7f, 0x3f, 0x81, 0x35, 0x09, 0x00, 0x14,
    0x00, 0x00, 0x00, 0x0d, 0x00, 0x00, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0xc6,
};

Answer registers(const Decoded&, const State&, Measurements& measurements)
{
    Answer answer(sizeof at_rest);
    std::ranges::copy(at_rest, answer.bytes.begin());
    const auto byte = [](auto value) { return static_cast<std::uint8_t>(value); };
    answer.put(45, "freqest", byte(measurements.measure("freqest", 0, 12, 3)))
        .put(46, "crc_reg", byte(0x80 | measurements.measure("crc_reg", 48, 30, 7)))
        .put(47, "rssi", byte(measurements.measure("rssi", 96, 60, 9)))
        .put(53, "txbytes", byte(measurements.count("txbytes", 9) % 64))
        .put(54, "rxbytes", byte(measurements.count("rxbytes", 17) % 64));
    return answer;
}

constexpr Row rows[] = {
    {settings, "vor_cfg_set_sub1g_frequency", "interface {interface_num}",
     chain(interface_num, int16(2, "frequency"))},
    {settings, "vor_cfg_sub1g_set_channel", "port {port_num}",
     chain(int16(1, "port_num"), text(3, "stream_name"), int16(4, "classifier"), text(5, "channel_name"))},
    {request(0x8009), "vor_cfg_get_reg_values", "registers", nothing, registers},
    {request(0x800b), "vor_cfg_set_sub1g_power", "interface {interface_num}", chain(interface_num, int16(9, "power"))},
};

} // namespace

extern const Family sub1g{"sub1gmgr", rows};

} // namespace vorsim::families
