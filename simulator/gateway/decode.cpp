#include "gateway/decode.hpp"

#include <algorithm>
#include <utility>

#include <fmt/core.h>

#include "gateway/match.hpp"
#include "text/text.hpp"

namespace vorsim::gateway {
namespace {

// Each branch widens from its own width: a common type of them all would lose the sign.
std::int64_t number_shown(const tables::Field& field, std::int32_t number)
{
    if (field.display == tables::Display::signed_number) {
        return number;
    }
    return field.kind == tables::Kind::int32 ? std::int64_t{static_cast<std::uint32_t>(number)}
                                             : std::int64_t{static_cast<std::uint16_t>(number)};
}

values::Scalar scalar_of(const Part& part, bool show_secrets)
{
    const tables::Field& field = *part.field;
    if (field.kind == tables::Kind::text) {
        const bool masked = field.display == tables::Display::secret && !show_secrets;
        return std::string(masked ? vor::mask : text_in(part));
    }
    if (field.display == tables::Display::address) {
        return vor::dotted(static_cast<std::uint32_t>(part.number));
    }
    return number_shown(field, part.number);
}

std::string text_of(const tables::Field* field, const values::Scalar& scalar)
{
    const auto* const text = std::get_if<std::string>(&scalar);
    if (text == nullptr) {
        return std::visit([](const auto& number) { return fmt::format("{}", number); }, scalar);
    }
    const bool plain = field != nullptr && (field->display == tables::Display::address ||
                                            (field->display == tables::Display::secret && *text == vor::mask));
    return plain ? vor::escaped(*text) : vor::quoted(*text, values::longest_in_line);
}

} // namespace

values::Value value_of(const tables::MessageRow& row, const tables::Field* field,
                       std::variant<values::Scalar, values::List> data)
{
    const std::string name(field != nullptr ? field->name : row.layout.lead);
    const bool in_object = row.object.find("{" + name + "}") != row.object.npos;
    std::string text;
    if (const auto* const list = std::get_if<values::List>(&data)) {
        for (const values::Scalar& scalar : *list) {
            text += (text.empty() ? "" : ",") + text_of(field, scalar);
        }
    } else {
        text = text_of(field, std::get<values::Scalar>(data));
    }
    return {name, std::move(text), std::move(data), in_object};
}

Decoded decode(std::uint16_t sap, const Match& match, bool show_secrets)
{
    const tables::MessageRow& row = *match.row;
    Decoded decoded{.sap = sap, .row = &row};
    if (match.lead) {
        decoded.values.push_back(value_of(row, nullptr, std::int64_t{*match.lead}));
    }
    values::List list; // of the last field
    for (const Part& part : match.parts) {
        values::Scalar scalar = scalar_of(part, show_secrets);
        if (part.field->repeated) {
            list.push_back(std::move(scalar));
        } else {
            decoded.values.push_back(value_of(row, part.field, std::move(scalar)));
        }
    }
    if (!list.empty()) {
        decoded.values.push_back(value_of(row, &row.layout.fields().back(), std::move(list)));
    }
    decoded.object = object_of(row.object, decoded.values);
    return decoded;
}

std::string object_of(std::string_view pattern, const std::vector<values::Value>& values)
{
    std::string object;
    while (!pattern.empty()) {
        const std::size_t open = std::min(pattern.find('{'), pattern.size());
        object += pattern.substr(0, open);
        if (open == pattern.size()) {
            break;
        }
        const std::size_t close = pattern.find('}', open);
        const auto value = std::ranges::find(values, pattern.substr(open + 1, close - open - 1), &values::Value::name);
        const auto* const held = value->held<std::string>();
        const std::string text = held != nullptr ? vor::escaped(*held) : value->text;
        object += text.empty() ? "\"\"" : text;
        pattern.remove_prefix(close + 1);
    }
    return object;
}

std::int32_t Decoded::number(std::string_view name) const
{
    const auto found = std::ranges::find(values, name, &values::Value::name);
    return found == values.end() ? 0 : static_cast<std::int32_t>(*found->held<std::int64_t>());
}

std::string values_text(const std::vector<values::Value>& values)
{
    std::string text;
    for (const values::Value& value : values) {
        if (!value.in_object) {
            text += fmt::format("{}{}={}", text.empty() ? "" : " ", value.name, value.text);
        }
    }
    return text;
}

} // namespace vorsim::gateway
