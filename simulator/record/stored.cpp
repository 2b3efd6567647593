#include "record/stored.hpp"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "record/json.hpp"
#include "tables/managers.hpp"
#include "tables/names.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim::record {

using vor::Json;

namespace {

[[noreturn]] void refuse(const std::string& path, std::string_view why)
{
    throw vor::JsonError(fmt::format("{} {}", vor::escaped(path), why));
}

std::string place_in(const std::string& path, std::string_view name)
{
    return path.empty() ? std::string(name) : fmt::format("{}/{}", path, name);
}

// Its members, which are all of the needed ones and some of the others.
const Json::Object& members_of(const Json& json, const std::string& path, std::vector<std::string_view> needed,
                               std::initializer_list<std::string_view> others = {})
{
    if (!json.is_object()) {
        refuse(path, "must be an object");
    }
    for (const std::string_view name : needed) {
        if (!json.contains(name)) {
            refuse(place_in(path, name), "is missing");
        }
    }
    needed.insert(needed.end(), others);
    for (const auto& [name, value] : json.members()) {
        if (!needed.empty() && std::ranges::find(needed, name) == needed.end()) {
            refuse(place_in(path, name), fmt::format("is unknown, expected {}", vor::alternatives(needed)));
        }
    }
    return json.members();
}

// The manager's, as a document calls it.
std::uint16_t sap_called(const std::string& key, const std::string& path)
try {
    return tables::checked_sap(key);
} catch (const tables::NameError& error) {
    throw vor::JsonError(fmt::format("{}: {}", vor::escaped(path), error.what()));
}

// ---- A setting of a document ------------------------------------------------

constexpr std::size_t longest_shown = 60;
constexpr std::size_t text_overhead = 6; // of an element: tag, kind, length and terminator

// What a value of the field is, where this one is not. Null: the option or flag byte.
std::optional<std::string> expected_instead(const tables::Field* field, const Json& json)
{
    bool right = false;
    std::string expected;
    if (field != nullptr && field->display == tables::Display::address) {
        in_addr address{};
        right = json.is_string() && inet_pton(AF_INET, json.string().c_str(), &address) == 1;
        expected = "an IPv4 address";
    } else if (field != nullptr && field->kind == tables::Kind::text) {
        const std::size_t most = field->length > 0 ? field->length - 1U : VORINFRA_DATA_MAX - text_overhead;
        right = json.is_string() && json.string().size() <= most && json.string().find('\0') == std::string::npos;
        expected = fmt::format("a text of at most {} bytes without a zero byte", most);
    } else {
        const tables::Range range = field != nullptr ? tables::range_of(*field) : tables::Range{0, UINT8_MAX};
        const auto* const number = std::get_if<std::int64_t>(&json.held());
        right = number != nullptr && *number >= range.least && *number <= range.most;
        expected = range.least == range.most ? fmt::format("{}", range.least)
                                             : fmt::format("a number from {} to {}", range.least, range.most);
    }
    return right ? std::nullopt : std::optional(expected);
}

// The values of a row, and what is wrong with those of the document.
struct Reading {
    const tables::MessageRow* row{};
    std::vector<values::Value> values{};
    std::vector<std::string> wrong{};

    void check(const tables::Field* field, const Json& json, const std::string& path)
    {
        if (const auto expected = expected_instead(field, json)) {
            const bool secret = field != nullptr && field->display == tables::Display::secret;
            wrong.push_back(
                fmt::format("{} must be {}{}", path, *expected,
                            secret ? "" : ", not " + vor::printable(vor::dump(json).substr(0, longest_shown))));
        }
    }
    void read(const tables::Field* field, std::string_view name, const Json& document, const std::string& path)
    {
        const Json* const json = document.find(name);
        const bool repeated = field != nullptr && field->repeated;
        const std::string place = place_in(path, name);
        if (json == nullptr && !repeated) {
            wrong.push_back(fmt::format("{} is missing", place));
        }
        if (json != nullptr && repeated && !json->is_array()) {
            wrong.push_back(fmt::format("{} must be a list", place));
        }
        for (std::size_t at = 0; json != nullptr && json->is_array() && repeated && at < json->size(); ++at) {
            check(field, json->elements()[at], place_in(place, std::to_string(at)));
        }
        if (json != nullptr && !repeated) {
            check(field, *json, place);
        }
        if (json != nullptr && wrong.empty() && !(repeated && json->empty())) { // empty lists are left out
            values.push_back(gateway::value_of(*row, field, data_of(*json)));
        }
    }
};

Reading read_as(const tables::MessageRow& row, const Json& document, const std::string& path)
{
    Reading reading{.row = &row};
    std::vector<std::string_view> names;
    const auto read = [&](const tables::Field* field, std::string_view name) {
        reading.read(field, name, document, path);
        names.push_back(name);
    };
    if (!row.layout.lead.empty()) {
        read(nullptr, row.layout.lead);
    }
    for (const tables::Field& field : row.layout.fields()) {
        read(&field, field.name);
    }
    for (const auto& [name, value] : document.members()) {
        if (std::ranges::find(names, name) == names.end()) {
            reading.wrong.push_back(fmt::format("{} is unknown", place_in(path, name)));
        }
    }
    const tables::Field* const last = names.empty() || row.layout.count == 0 ? nullptr : &row.layout.fields().back();
    if (reading.wrong.empty() && last != nullptr && !last->counted_by.empty()) {
        const auto announced = document.at(last->counted_by).number<std::int64_t>();
        const Json* const list = document.find(last->name);
        const std::size_t present = list != nullptr ? list->size() : 0;
        if (!std::cmp_equal(announced, present)) {
            reading.wrong.push_back(fmt::format("{} is {}, but {} has {}", place_in(path, last->counted_by), announced,
                                                last->name, vor::counted(present, "element")));
        }
    }
    return reading;
}

gateway::Decoded stored_call(std::uint16_t sap, const std::string& object, const std::string& call, const Json& json)
{
    const std::string path =
        vor::escaped(fmt::format("managers/{}/objects/{}/{}", tables::manager_key(sap), object, call));
    std::optional<Reading> best;
    try {
        tables::Selection known;
        known.of(sap);
        known.call(call);
        known.object(object);
        members_of(json, path, {});
        for (const tables::MessageRow* row : known.rows()) {
            if (row->call != call || row->query != nullptr) {
                continue;
            }
            Reading reading = read_as(*row, json, path);
            if (!best || reading.wrong.size() < best->wrong.size()) {
                best = std::move(reading);
            }
        }
    } catch (const tables::NameError& error) {
        throw std::runtime_error(fmt::format("{}: {}", path, error.what()));
    }
    if (!best || !best->wrong.empty()) {
        throw std::runtime_error(best ? best->wrong.front() : fmt::format("{} is not a setting", path));
    }
    if (const std::string own = gateway::object_of(best->row->object, best->values); own != object) {
        throw std::runtime_error(fmt::format("{} has the values of {}", path, vor::quoted(own)));
    }
    return {sap, best->row, object, std::move(best->values)};
}

// ---- konfd's lines of a document --------------------------------------------

constexpr std::size_t deepest_line = 16;
constexpr std::size_t longest_line = 1024;
constexpr int highest_priority = 99999;

void store_konfd(konfd::Konfd& konfd, const Json& json, std::vector<std::string>& path)
{
    const std::string& place = json.at("at").string();
    const std::string& line = json.at("line").string();
    const auto depth = json.at("konfd").number<std::size_t>();
    if (line.ends_with(vor::mask) && konfd::without_secret(line) == line && line != vor::mask) {
        throw std::runtime_error(fmt::format("{}/line is masked\nhint: write the state with --show-secrets", place));
    }
    if (depth > std::min(deepest_line, path.size())) {
        throw std::runtime_error(fmt::format("{} is under more than {} lines", place, deepest_line));
    }
    path.resize(depth);
    std::string command = fmt::format("-s -l \"{}\" -p {}", line, json.at("priority").number<int>());
    for (const std::string& part : path) {
        command += fmt::format(" \"{}\"", part);
    }
    const auto is_wrong = [](unsigned char character) {
        return character == '"' || character < 0x20 || character == 0x7f;
    };
    if (line.empty() || line.size() > longest_line || std::ranges::any_of(line, is_wrong)) {
        throw std::runtime_error(fmt::format(
            "{}/line must be 1 to {} bytes without double quotes and control characters", place, longest_line));
    }
    if (const konfd::Reply reply = konfd.execute(command); reply.answer != "-o\n") {
        throw std::runtime_error(fmt::format("{}: {}", place, reply.record.complaint));
    }
    path.push_back(line);
}

void add_lines(std::vector<std::string>& all, const Json& lines, const std::string& path, std::size_t depth)
{
    if (!lines.is_array()) {
        refuse(path, "must be a list");
    }
    for (std::size_t at = 0; at < lines.size(); ++at) {
        const Json& one = lines.elements()[at];
        const std::string place = place_in(path, std::to_string(at));
        members_of(one, place, {"line"}, {"priority", "under"});
        if (!one.at("line").is_string()) {
            refuse(place_in(place, "line"), "must be a text");
        }
        const Json* const priority = one.find("priority");
        const auto* const number = priority != nullptr ? std::get_if<std::int64_t>(&priority->held()) : nullptr;
        if (priority != nullptr && (number == nullptr || *number < 0 || *number > highest_priority)) {
            refuse(place_in(place, "priority"), fmt::format("must be a number from 0 to {}", highest_priority));
        }
        all.push_back(vor::dump({{"at", place},
                                 {"konfd", depth},
                                 {"line", one.at("line")},
                                 {"priority", number != nullptr ? *number : 0}}));
        if (const Json* const under = one.find("under")) {
            add_lines(all, *under, place_in(place, "under"), depth + 1);
        }
    }
}

Json json_of(const std::vector<konfd::Tree::Node>& nodes)
{
    Json lines = Json::array();
    for (const konfd::Tree::Node& node : nodes) {
        lines.push_back({{"line", node.line}, {"priority", node.priority}, {"under", json_of(node.children)}});
    }
    return lines;
}

Json json_of(const Counters& counters)
{
    return {{"accepted", counters.accepted},   {"complained", counters.complained}, {"invalid", counters.invalid},
            {"malformed", counters.malformed}, {"foreign", counters.foreign},       {"faulted", counters.faulted}};
}

} // namespace

Json json_of(const gateway::State& state)
{
    Json all = Json::object();
    for (const auto& [sap, objects] : state.managers()) {
        Json::Object by_object; // thousands, perhaps: none is looked up
        for (const auto& [object, settings] : objects) {
            Json& calls = by_object.emplace_back(object, Json::object()).second;
            for (const gateway::State::Setting& setting : settings) {
                calls[setting.row->call] = json_of(setting.values);
            }
        }
        all[tables::manager_key(sap)] = {{"sap", sap}, {"objects", Json::of(std::move(by_object))}};
    }
    return all;
}

Json json_of(const Counters& counters, std::uint64_t lines_lost, const gateway::State& state, const konfd::Konfd& konfd)
{
    return {{"schema", 1},
            {"messages", counters.messages},
            {"complaints", counters.complained},
            {"counters", json_of(counters)},
            {"lines_lost", lines_lost},
            {"managers", json_of(state)},
            {"konfd", json_of(konfd)}};
}

Json json_of(const konfd::Konfd& konfd)
{
    return json_of(konfd.lines());
}

Json json_of(const std::vector<faults::RuleList::Listed>& rules)
{
    Json all = Json::array();
    for (const faults::RuleList::Listed& rule : rules) {
        all.push_back({{"number", rule.number},
                       {"rule", rule.rule},
                       {"acted", rule.acted},
                       {"concerned", rule.matched},
                       {"over", rule.over}});
    }
    return all;
}

std::vector<std::string> stored_lines(const Json& document)
{
    members_of(document, "", {"schema", "managers"}, {"messages", "complaints", "counters", "lines_lost", "konfd"});
    std::vector<std::string> all;
    for (const auto& [key, manager] : members_of(document.at("managers"), "managers", {})) {
        const std::string path = place_in("managers", key);
        members_of(manager, path, {"sap", "objects"});
        const std::uint16_t sap = sap_called(key, path);
        if (tables::manager_key(sap) != key) {
            refuse(path, fmt::format("must be called {}", tables::manager_key(sap)));
        }
        if (manager.at("sap") != Json(sap)) {
            refuse(place_in(path, "sap"), fmt::format("must be {}, not {}", sap, vor::dump(manager.at("sap"))));
        }
        for (const auto& [object, calls] : members_of(manager.at("objects"), place_in(path, "objects"), {})) {
            const std::string place = place_in(place_in(path, "objects"), object);
            for (const auto& [call, values] : members_of(calls, place, {})) {
                all.push_back(vor::dump({{"sap", sap}, {"object", object}, {"call", call}, {"values", values}}));
            }
        }
    }
    if (const Json* const lines = document.find("konfd")) {
        add_lines(all, *lines, "konfd", 0);
    }
    return all;
}

void Storing::take(std::string_view line)
{
    const Json json = Json::parse(line);
    if (json.contains("konfd")) {
        store_konfd(konfd, json, path_);
        return;
    }
    const auto sap = json.at("sap").number<std::uint16_t>();
    const std::string& object = json.at("object").string();
    const std::string& call = json.at("call").string();
    if (!state.keep(stored_call(sap, object, call, json.at("values")))) {
        throw std::runtime_error("the state is too large");
    }
}

} // namespace vorsim::record
