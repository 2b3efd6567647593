#include "call/call_key.hpp"

#include <algorithm>
#include <charconv>

#include <fmt/core.h>

#include "rows/reading.hpp"
#include "text/text.hpp"

namespace vorcfg {

using vor::Json;

namespace {

// JSON holds no other text; one would be as good as the next.
Json text_json(const std::string& text)
{
    return vor::is_utf8(text) ? Json(text) : Json{{"bytes", vor::hexadecimal(text)}};
}

std::string text_in(const Json& json)
{
    if (json.is_string()) {
        return json.string();
    }
    std::string text;
    const auto digits = json.at("bytes").string();
    for (const char* at = digits.data(); at < digits.data() + digits.size(); at += 3) {
        unsigned char byte = 0;
        if (std::from_chars(at, at + 2, byte, 16).ptr != at + 2) {
            throw Complaint{fmt::format("{} are no bytes", vor::quoted(digits))};
        }
        text += static_cast<char>(byte);
    }
    return text;
}

Json value_json(const Argument& argument, const Value& value, bool to_show)
{
    if (argument.is_number()) {
        return value.number;
    }
    return value.secret ? Json(vor::mask) : to_show ? Json(value.text) : text_json(value.text);
}

Value value_in(const Argument& argument, const Json& json)
{
    Value value;
    if (argument.is_number()) {
        value.number = json.number<std::int64_t>();
        value.text = argument.kind == Kind::decimal ? std::to_string(value.number) : "";
    } else {
        value.text = text_in(json);
    }
    return value;
}

} // namespace

Json values_json(const Planned& planned, bool masked)
{
    Json values = Json::object();
    const auto arguments = planned.row->arguments();
    const auto add = [&](Json& to, const Argument& argument, const Value& value) {
        if (masked || (!value.secret && argument.is_sent)) {
            to.push_back(value_json(argument, value, masked));
        }
    };
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const Argument& argument = arguments[i];
        Json items = Json::array();
        if (argument.is_list) {
            for (std::size_t item = i; item < planned.values.size(); item++) {
                add(items, argument, planned.values[item]);
            }
            values[argument.name] = std::move(items);
        } else if (!argument.is_result() && planned.values[i].given) {
            add(items, argument, planned.values[i]);
            if (!items.empty()) {
                values[argument.name] = items.elements().front();
            }
        }
    }
    return values;
}

Said said(const Planned& planned)
{
    return said(*planned.row, values_json(planned, false), std::ranges::any_of(planned.values, &Value::secret));
}

Said said(const Row& row, Json arguments, bool secret)
{
    Json objects = Json::array();
    const auto is_decided = [&arguments](const Argument& argument) {
        const Json* const decides = arguments.find(argument.decided_by);
        return decides != nullptr && *decides == Json(argument.decided_at.number);
    };
    for (const Argument& argument : row.arguments()) { // an older journal may have what is never sent
        if (!argument.is_sent || (!argument.decided_by.empty() && !is_decided(argument))) {
            arguments.erase(argument.name);
        }
    }
    for (const Argument& argument : row.arguments()) {
        if (argument.is_object && arguments.contains(argument.name)) {
            objects.push_back(arguments[argument.name]);
        }
    }
    return {&row, vor::dump(arguments), vor::dump(objects), secret};
}

Planned planned(const Said& said)
try {
    const Json arguments = Json::parse(said.arguments);
    Planned again{said.row, {}, {}};
    for (const Argument& argument : said.row->arguments()) {
        const Json* const value = arguments.find(argument.name);
        if (argument.is_list) {
            for (std::size_t i = 0; value != nullptr && i < value->size(); i++) {
                again.values.push_back(value_in(argument, value->elements()[i]));
            }
        } else if (argument.is_result()) {
            again.values.emplace_back().text.resize(argument.kind == Kind::untouched ? result_room : 0);
        } else if (value != nullptr) {
            again.values.push_back(value_in(argument, *value));
        } else if (argument.is_optional || !argument.decided_by.empty() || !argument.is_sent) {
            again.values.emplace_back().given = false;
        } else {
            throw Complaint{fmt::format("{} is missing", argument.name)};
        }
    }
    return again;
} catch (const vor::JsonError&) {
    throw Complaint{fmt::format("{} are no arguments of {}", said.arguments, said.row->full_name())};
}

std::string subject_of(const Said& said, const Row& other)
{
    return fmt::format("{} {}", other.full_name(), said.objects);
}

std::string subject_of(const Said& said)
{
    return subject_of(said, *said.row);
}

bool changes_nothing(const Planned& planned)
{
    const Row& row = *planned.row;
    if (row.channel == Channel::none || row.has(does_nothing) || row.answers_record) {
        return true;
    }
    const auto arguments = row.arguments();
    for (std::size_t i = 0; i < arguments.size() && i < planned.values.size(); i++) {
        const auto is_idle = [&](const Choice& choice) {
            return choice.idle && (arguments[i].is_number() ? choice.number == planned.values[i].number
                                                            : choice.name == planned.values[i].text);
        };
        if (arguments[i].is_result() ||
            (planned.values[i].given && std::ranges::any_of(arguments[i].choices, is_idle))) {
            return true;
        }
    }
    return false;
}

std::string shown(const Argument& argument, const Json& value)
{
    if (value.is_array()) {
        std::string items;
        for (const Json& item : value.elements()) {
            items += fmt::format("{}{}", items.empty() ? "" : ", ", shown(argument, item));
        }
        return fmt::format("[{}]", items);
    }
    if (value.is_integer()) {
        const auto named = std::ranges::find(argument.choices, value.number<std::int64_t>(), &Choice::number);
        return named != argument.choices.end() ? std::string(named->name) : vor::dump(value);
    }
    if (!value.is_string()) { // bytes that are no text
        return vor::dump(value);
    }
    const auto& text = value.string();
    return text.empty() || text.find_first_of(" \t\"#") != std::string::npos ? vor::quoted(text) : vor::escaped(text);
}

std::string name_of(const Said& said)
{
    std::string name = said.row->full_name();
    const Json arguments = Json::parse(said.arguments);
    for (const Argument& argument : said.row->arguments()) {
        if (argument.is_object && arguments.contains(argument.name)) {
            name += ' ' + shown(argument, arguments[argument.name]);
        }
    }
    return name;
}

} // namespace vorcfg
