#include "json.hpp"

#include <cstdio>

namespace vorcfg {

// The length of the UTF-8 sequence that text begins with; 0 for none.
static std::size_t sequence_length(std::string_view text)
{
    const auto lead = std::uint8_t(text.front());
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xc2 && lead < 0xe0 ? 2
                               : lead >= 0xe0 && lead < 0xf0 ? 3
                               : lead >= 0xf0 && lead < 0xf5 ? 4
                                                             : 0;
    if (length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; i++) {
        if ((std::uint8_t(text[i]) & 0xc0) != 0x80) {
            return 0;
        }
    }
    return length;
}

// A byte that is no UTF-8 becomes the character of its number.
std::string json_quoted(std::string_view text)
{
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::size_t length = sequence_length(text);
        const char first = text.front();
        if (first == '"' || first == '\\') {
            quoted += '\\';
            quoted += first;
        } else if (length == 0 || std::uint8_t(first) < ' ') {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", unsigned(std::uint8_t(first)));
            quoted += escaped;
        } else {
            quoted += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return quoted + '"';
}

JsonObject& JsonObject::raw(std::string_view key, std::string_view value)
{
    members += members.empty() ? "" : ",";
    members += json_quoted(key);
    members += ':';
    members += value;
    return *this;
}

JsonObject& JsonObject::list(std::string_view key, const std::vector<std::string>& raw_values)
{
    std::string text = "[";
    for (const std::string& value : raw_values) {
        text += text.size() > 1 ? "," : "";
        text += value;
    }
    return raw(key, text + ']');
}

JsonObject& JsonObject::texts(std::string_view key, const std::vector<std::string>& values)
{
    std::vector<std::string> quoted;
    quoted.reserve(values.size());
    for (const std::string& value : values) {
        quoted.push_back(json_quoted(value));
    }
    return list(key, quoted);
}

} // namespace vorcfg
