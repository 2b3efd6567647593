// json.hpp: one JSON object at a time, its members in the order added.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

std::string json_quoted(std::string_view text);

class JsonObject {
public:
    JsonObject& text(std::string_view key, std::string_view value) { return raw(key, json_quoted(value)); }
    JsonObject& number(std::string_view key, std::int64_t value) { return raw(key, std::to_string(value)); }
    JsonObject& boolean(std::string_view key, bool value) { return raw(key, value ? "true" : "false"); }
    JsonObject& texts(std::string_view key, const std::vector<std::string>& values);
    JsonObject& list(std::string_view key, const std::vector<std::string>& raw_values);
    JsonObject& raw(std::string_view key, std::string_view value);

    std::string str() const { return '{' + members + '}'; }

private:
    std::string members;
};

} // namespace vorcfg
