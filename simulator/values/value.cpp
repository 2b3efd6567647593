#include "values/value.hpp"

#include <fmt/core.h>

namespace vorsim {

Json json_of(const std::vector<Value>& values)
{
    Json object = Json::object();
    for (const Value& value : values) {
        object[std::string(value.name)] = value.data;
    }
    return object;
}

std::string line_of(const std::vector<Value>& values)
{
    std::string line;
    for (const Value& value : values) {
        if (!value.in_object) {
            line += fmt::format("{}{}={}", line.empty() ? "" : " ", value.name, value.text);
        }
    }
    return line;
}

} // namespace vorsim
