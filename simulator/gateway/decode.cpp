#include "gateway/decode.hpp"

#include <algorithm>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vorsim {
namespace {

// Each branch widens from its own width: a common type of them all would lose the sign.
std::int64_t number_shown(const Field& field, std::int32_t number)
{
    if (field.display == Display::signed_number) {
        return number;
    }
    return field.kind == Kind::int32 ? std::int64_t{static_cast<std::uint32_t>(number)}
                                     : std::int64_t{static_cast<std::uint16_t>(number)};
}

Value value_of(const Part& part, bool show_secrets)
{
    const Field& field = *part.field;
    if (field.kind == Kind::text) {
        const std::string_view text = text_in(part);
        if (field.display == Display::secret && !show_secrets) {
            return {field.name, std::string(vor::mask), vor::mask};
        }
        return {field.name, vor::quoted(text, longest_in_line), text};
    }
    const std::int32_t number = part.number;
    if (field.display == Display::address) {
        const std::string address = vor::dotted(static_cast<std::uint32_t>(number));
        return {field.name, address, address};
    }
    const std::int64_t shown = number_shown(field, number);
    return {field.name, std::to_string(shown), shown};
}

void add_value(std::vector<Value>& values, const Field& field, Value value)
{
    if (!field.repeated) {
        values.push_back(std::move(value));
        return;
    }
    if (values.empty() || values.back().name != field.name) {
        values.push_back({field.name, "", Json::array()});
    }
    values.back().text += (values.back().text.empty() ? "" : ",") + value.text;
    values.back().data.push_back(std::move(value.data));
}

// The object's text with the values in place of their names.
std::string object_of(std::string_view pattern, std::vector<Value>& values)
{
    std::string object;
    while (!pattern.empty()) {
        const std::size_t open = std::min(pattern.find('{'), pattern.size());
        object += pattern.substr(0, open);
        if (open == pattern.size()) {
            break;
        }
        const std::size_t close = pattern.find('}', open);
        const auto value = std::ranges::find(values, pattern.substr(open + 1, close - open - 1), &Value::name);
        value->in_object = true;
        const std::string text = value->data.is_string() ? vor::escaped(value->data.string()) : value->text;
        object += text.empty() ? "\"\"" : text;
        pattern.remove_prefix(close + 1);
    }
    return object;
}

} // namespace

Decoded decode(std::uint16_t sap, const Match& match, bool show_secrets)
{
    const Row& row = *match.row;
    Decoded decoded{.sap = sap, .row = &row};
    if (match.lead) {
        decoded.values.push_back({row.layout.lead, std::to_string(*match.lead), *match.lead});
    }
    for (const Part& part : match.parts) {
        add_value(decoded.values, *part.field, value_of(part, show_secrets));
    }
    decoded.object = object_of(row.object, decoded.values);
    return decoded;
}

} // namespace vorsim
