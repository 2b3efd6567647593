// MAC addresses and dotted quads, compared with a second implementation.
#include <array>
#include <cctype>
#include <optional>
#include <vector>

#include <arpa/inet.h>

#include <device_mgmt/common.h>

#include "input.hpp"

using namespace fuzz;

namespace {

// How many whole groups of two digits lead the text, one character between two.
std::size_t groups_of(std::string_view text)
{
    std::size_t groups = 0;
    while (groups < 6 && text.size() >= 2 && std::isxdigit(static_cast<unsigned char>(text[0])) != 0 &&
           std::isxdigit(static_cast<unsigned char>(text[1])) != 0) {
        text.remove_prefix(std::min<std::size_t>(++groups < 6 ? 3 : 2, text.size()));
    }
    return groups;
}

std::optional<vor_uint32> address_of(std::string_view text)
{
    vor_uint32 address = 0;
    for (int part = 0; part < 4; ++part) {
        const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
        const std::size_t first = std::min(text.find_first_not_of('0'), end);
        const std::string digits(text.substr(first, end - first));
        const int number = digits.size() > 3 ? 256 : std::atoi(digits.c_str());
        if (number > 255 || (part < 3 && (end == text.size() || text[end] != '.'))) {
            return {};
        }
        address = address << 8 | static_cast<vor_uint32>(number);
        text.remove_prefix(part < 3 ? end + 1 : end);
    }
    return htonl(address);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<char> exact(data, std::find(data, data + size, 0));
    exact.push_back('\0');
    exact.shrink_to_fit(); // so that a read past the end is reported
    const std::string_view text(exact.data());

    constexpr vor_uchar untouched = 0xa5;
    std::array<vor_uchar, 6> bytes;
    bytes.fill(untouched);
    const std::size_t groups = groups_of(text);
    require(vor_convert_mac_address_from_str_to_byte(exact.data(), bytes.data()) == (groups == 6 ? 0 : -1500),
            "six groups are a MAC address");
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const int expected = at < groups ? std::stoi(std::string(text.substr(3 * at, 2)), nullptr, 16) : untouched;
        require(bytes[at] == expected, "each whole group is a byte, and nothing else is written");
    }

    vor_ip_address address = 0xa5a5a5a5;
    const auto expected = address_of(text);
    require(ip_aton(exact.data(), &address) == (expected ? 0 : -1), "four parts are an address");
    require(address == expected.value_or(0xa5a5a5a5), "the address is the text's");
    return 0;
}
