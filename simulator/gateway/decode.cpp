#include "gateway/decode.hpp"

#include <algorithm>
#include <utility>

#include <fmt/core.h>

#include "gateway/match.hpp"
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
    std::string name(field.name);
    if (field.kind == Kind::text) {
        const std::string text(text_in(part));
        if (field.display == Display::secret && !show_secrets) {
            return {std::move(name), std::string(vor::mask), std::string(vor::mask)};
        }
        return {std::move(name), vor::quoted(text, longest_in_line), text};
    }
    const std::int32_t number = part.number;
    if (field.display == Display::address) {
        const std::string address = vor::dotted(static_cast<std::uint32_t>(number));
        return {std::move(name), address, address};
    }
    const std::int64_t shown = number_shown(field, number);
    return {std::move(name), std::to_string(shown), shown};
}

// One of several of the same name.
void add_to_list(std::vector<Value>& values, const Value& value)
{
    if (values.empty() || values.back().name != value.name) {
        values.push_back({value.name, "", List()});
    }
    Value& list = values.back();
    list.text += (list.text.empty() ? "" : ",") + value.text;
    std::get<List>(list.data).push_back(std::get<Scalar>(value.data));
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
        const auto* const held = value->held<std::string>();
        const std::string text = held != nullptr ? vor::escaped(*held) : value->text;
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
        decoded.values.push_back(
            {std::string(row.layout.lead), std::to_string(*match.lead), std::int64_t{*match.lead}});
    }
    for (const Part& part : match.parts) {
        Value value = value_of(part, show_secrets);
        if (part.field->repeated) {
            add_to_list(decoded.values, value);
        } else {
            decoded.values.push_back(std::move(value));
        }
    }
    decoded.object = object_of(row.object, decoded.values);
    return decoded;
}

std::int32_t Decoded::number(std::string_view name) const
{
    const auto found = std::ranges::find(values, name, &Value::name);
    return found == values.end() ? 0 : static_cast<std::int32_t>(*found->held<std::int64_t>());
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
