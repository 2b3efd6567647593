#include "site/record.hpp"

#include <algorithm>
#include <charconv>
#include <pwd.h>
#include <unistd.h>

#include <fmt/core.h>

#include "rows/families.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

using vor::Json;

namespace {

constexpr int version = 1;

// JSON cannot hold a text that is not UTF-8: its bytes are written in hexadecimal.
Json json_of(const call::KeptValue& value)
{
    if (const auto* const bytes = std::get_if<call::RawText>(&value)) {
        return {{"bytes", vor::hexadecimal(bytes->text)}};
    }
    const auto* const number = std::get_if<std::int64_t>(&value);
    return number != nullptr ? Json(*number) : Json(std::get<std::string>(value));
}

// "0a ff"
call::RawText bytes_in(std::string_view digits)
{
    call::RawText bytes;
    for (std::size_t at = 0; at + 2 <= digits.size(); at += 3) {
        unsigned char byte = 0;
        std::from_chars(digits.data() + at, digits.data() + at + 2, byte, 16);
        bytes.text += static_cast<char>(byte);
    }
    return bytes;
}

call::KeptValue value_in(std::string_view name, const Json& json)
{
    if (json.type() == Json::Type::integer) {
        return json.number<std::int64_t>();
    }
    if (json.is_string()) {
        return json.string();
    }
    const Json* const digits = json.size() == 1 ? json.find("bytes") : nullptr;
    call::RawText bytes = digits != nullptr && digits->is_string() ? bytes_in(digits->string()) : call::RawText();
    if (digits == nullptr || *digits != Json(vor::hexadecimal(bytes.text))) {
        throw input::InputError{fmt::format("{} must be a number, a text or its bytes, not {}", name, vor::dump(json))};
    }
    return bytes;
}

call::KeptValues values_in(const rows::Argument& argument, const Json& json)
{
    if (!argument.is_list || !json.is_array()) {
        return {value_in(argument.name, json)};
    }
    call::KeptValues values;
    for (const Json& element : json.elements()) {
        values.push_back(value_in(argument.name, element));
    }
    return values;
}

call::CallKey key_in(const Json& json)
{
    const auto call = json.at("call").string();
    const std::size_t blank = std::min(call.find(' '), call.size());
    const rows::Row* const row =
        rows::row_named(call.substr(0, blank), std::string_view{call}.substr(std::min(blank + 1, call.size())));
    if (row == nullptr) {
        throw input::InputError{fmt::format("unknown call \"{}\"", call)};
    }
    const Json& arguments = json.at("arguments");
    if (!arguments.is_object()) {
        throw input::InputError{"the arguments must have names"};
    }
    const auto known = row->arguments();
    std::vector<call::KeptValues> values(known.size());
    decltype(call::CallKey::unknown) unknown;
    for (const auto& [name, value] : arguments.members()) {
        const auto argument = std::ranges::find(known, name, &rows::Argument::name);
        if (argument == known.end()) {
            unknown.emplace_back(name, value_in(name, value));
        } else {
            values[static_cast<std::size_t>(argument - known.begin())] = values_in(*argument, value);
        }
    }
    call::CallKey key = call::key_of(*row, std::move(values), json.contains("secret"));
    key.unknown = std::move(unknown);
    key.fingerprint = json.value("secret_hmac", "");
    return key;
}

template <std::integral Number>
std::optional<Number> number_in(const Json& json, const char* name)
{
    const Json* const number = json.find(name);
    return number != nullptr ? std::optional(number->number<Number>()) : std::nullopt;
}

const std::string& user()
{
    static const std::string name = [] {
        const passwd* const entry = getpwuid(getuid());
        return entry != nullptr ? std::string(entry->pw_name) : std::to_string(getuid());
    }();
    return name;
}

Json json_of(const GatewayNamed& record)
{
    Json json = Json::object();
    json.add("vorcfg_journal", record.is_first ? version : 0);
    json["gateway"] = record.gateway;
    json["at"] = record.at;
    return json;
}

Json json_of(const CallBegun& record)
{
    Json json{{"begin", record.number}, {"at", record.at}, {"by", user()}};
    if (!record.file.empty()) {
        json["file"] = record.file;
        json["line"] = record.line;
    }
    json["call"] = record.key.row->full_name();
    json["arguments"] = values_json(record.key);
    json.add("secret", record.key.secret);
    json.add("secret_hmac", record.key.fingerprint);
    json.add("replaces", record.replaces);
    json.add("takes_back", record.takes_back);
    return json;
}

Json json_of(const CallEnded& record)
{
    Json json{{"end", record.number},
              {"at", record.at},
              {"outcome", record.outcome},
              {"verdict", record.verdict},
              {"done", record.done}};
    json.add("status", record.status);
    return json;
}

Json json_of(const ApplyPending& record)
{
    Json json{{"pending", record.first},
              {"at", record.at},
              {"until", record.until},
              {"boot", record.boot},
              {"deadline_ms", record.deadline.count()},
              {"reverting", record.reverting}};
    json.add("process", record.process);
    return json;
}

Json json_of(const ApplyDecided& record)
{
    return {{record.confirmed ? "confirmed" : "taken_back", true}, {"at", record.at}, {"by", user()}};
}

Json json_of(const CallsVoided& record)
{
    return {{"voided", Json::array(record.numbers)}, {"at", record.at}, {"by", user()}};
}

} // namespace

Json values_json(const call::CallKey& key)
{
    Json values = Json::object();
    for (std::size_t i = 0; i < key.values.size(); i++) {
        const rows::Argument& argument = key.row->arguments()[i];
        if (argument.is_list) {
            Json& items = values[argument.name] = Json::array();
            for (const call::KeptValue& value : key.values[i]) {
                items.push_back(json_of(value));
            }
        } else if (!key.values[i].empty()) {
            values[argument.name] = json_of(key.values[i].front());
        }
    }
    for (const auto& [name, value] : key.unknown) {
        values[name] = json_of(value);
    }
    return values;
}

std::string text_of(const Record& record)
{
    return vor::dump(std::visit([](const auto& each) { return json_of(each); }, record));
}

Record record_in(std::string_view line, bool is_first)
{
    const Json json = Json::parse(line);
    const Json* const known = json.find("vorcfg_journal");
    if (is_first && known == nullptr) {
        throw input::InputError{"not a journal"};
    }
    if (is_first && *known != Json(version)) {
        throw input::InputError{fmt::format("journal version must be {1}, not {0}", vor::dump(*known), version)};
    }
    if (json.contains("begin")) {
        return CallBegun{.number = json["begin"].number<std::uint64_t>(),
                         .at = json.at("at").string(),
                         .file = json.value("file", ""),
                         .line = json.value("line", std::size_t{0}),
                         .key = key_in(json),
                         .replaces = number_in<std::uint64_t>(json, "replaces"),
                         .takes_back = number_in<std::uint64_t>(json, "takes_back")};
    }
    if (json.contains("end")) {
        const Json& done = json.at("done");
        return CallEnded{.number = json["end"].number<std::uint64_t>(),
                         .at = json.at("at").string(),
                         .outcome = json.at("outcome").string(),
                         .verdict = json.at("verdict").string(),
                         .done = done.is_null() ? std::nullopt : std::optional(done.boolean()),
                         .status = number_in<std::int32_t>(json, "status")};
    }
    if (json.contains("pending")) {
        return ApplyPending{.first = json["pending"].number<std::uint64_t>(),
                            .at = json.value("at", ""),
                            .until = json.value("until", ""),
                            .boot = json.value("boot", ""),
                            .deadline = std::chrono::milliseconds(json.value("deadline_ms", std::int64_t{0})),
                            .process = json.value("process", 0),
                            .reverting = json.value("reverting", false)};
    }
    if (json.contains("confirmed") || json.contains("taken_back")) {
        return ApplyDecided{json.contains("confirmed"), json.value("at", "")};
    }
    if (json.contains("voided")) {
        CallsVoided voided{.numbers = {}, .at = json.value("at", "")};
        for (const Json& number : json["voided"].elements()) {
            voided.numbers.push_back(number.number<std::uint64_t>());
        }
        return voided;
    }
    if (json.contains("gateway")) {
        return GatewayNamed{json["gateway"].string(), known != nullptr, json.value("at", "")};
    }
    throw input::InputError{"unknown record"};
}

} // namespace vorcfg::site
