#include "told.hpp"

namespace vorsim {

std::int32_t Told::number(std::string_view name) const
{
    for (const Value& value : values) {
        if (value.name == name) {
            return static_cast<std::int32_t>(value.data.get<std::int64_t>());
        }
    }
    return 0;
}

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
            line += (line.empty() ? "" : " ") + std::string(value.name) + "=" + value.shown;
        }
    }
    return line;
}

} // namespace vorsim
