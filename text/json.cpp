#include "text/json.hpp"

#include <fmt/format.h>

namespace vor {

std::string dump(const Json& json, int indent)
{
    const std::string text = json.dump(indent, ' ', false, Json::error_handler_t::replace);
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const auto next = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : 0);
        if (byte == 0x7f) {
            out += "\\u007f";
        } else if (byte == 0xc2 && next < 0xa0) { // the second set of control characters
            out += fmt::format("\\u00{:02x}", next);
            ++at;
        } else {
            out += text[at];
        }
    }
    return out;
}

} // namespace vor
