#include "record/stored.hpp"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

#include <fmt/core.h>

#include "record/json.hpp"
#include "tables/managers.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim::record {

using vor::Json;

namespace {

// The values of the row; none if one is missing or unknown. Empty lists are left out.
std::optional<std::vector<values::Value>> values_of(const tables::MessageRow& row, const Json& json)
{
    std::vector<std::pair<const tables::Field*, const Json*>> held;
    bool whole = true;
    const auto look = [&](std::string_view name, const tables::Field* field) {
        const Json* const data = json.find(name);
        if (data != nullptr) {
            held.emplace_back(field, data);
        } else {
            whole = whole && field != nullptr && field->repeated;
        }
    };
    if (!row.layout.lead.empty()) {
        look(row.layout.lead, nullptr);
    }
    for (const tables::Field& field : row.layout.fields()) {
        look(field.name, &field);
    }
    if (!whole || held.size() != json.members().size()) {
        return {};
    }
    std::vector<values::Value> values;
    for (const auto& [field, data] : held) {
        values.push_back(gateway::value_of(row, field, data_of(*data)));
    }
    return values;
}

// None: the manager has no such call.
std::optional<gateway::Decoded> stored_call(std::uint16_t sap, const std::string& object, const std::string& call,
                                            const Json& json)
{
    for (const tables::ListedRow& listed : tables::all_rows()) {
        if (listed.row->call != call || !listed.serves(sap)) {
            continue;
        }
        if (auto values = values_of(*listed.row, json)) {
            return gateway::Decoded{sap, listed.row, object, std::move(*values)};
        }
    }
    return {};
}

constexpr std::size_t deepest_line = 16;

void store_konfd(konfd::Konfd& konfd, const Json& json, std::vector<std::string>& path)
{
    const std::string& line = json.at("line").string();
    const auto depth = json.at("konfd").number<std::size_t>();
    if (line.ends_with(vor::mask) && konfd::without_secret(line) == line && line != vor::mask) {
        throw std::runtime_error(
            fmt::format("konfd's line \"{}\" is masked (write the state with --show-secrets)", line));
    }
    path.resize(std::min(depth, path.size()));
    std::string command = fmt::format("-s -l \"{}\" -p {}", line, json.value("priority", 0));
    for (const std::string& part : path) {
        command += fmt::format(" \"{}\"", part);
    }
    if (depth > std::min(deepest_line, path.size()) || konfd.execute(command).answer != "-o\n") {
        throw std::runtime_error(
            fmt::format("cannot store konfd's line {}", vor::quoted(line, values::longest_in_line)));
    }
    path.push_back(line);
}

void add_lines(std::vector<std::string>& all, const Json& lines, std::size_t depth)
{
    for (const Json& one : lines.elements()) {
        all.push_back(vor::dump({{"konfd", depth}, {"line", one.at("line")}, {"priority", one.value("priority", 0)}}));
        if (const Json* const under = one.find("under")) {
            add_lines(all, *under, depth + 1);
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
    std::vector<std::string> all;
    for (const auto& [key, manager] : document.at("managers").members()) {
        for (const auto& [object, calls] : manager.at("objects").members()) {
            for (const auto& [call, values] : calls.members()) {
                all.push_back(
                    vor::dump({{"sap", manager.at("sap")}, {"object", object}, {"call", call}, {"values", values}}));
            }
        }
    }
    if (const Json* const lines = document.find("konfd")) {
        add_lines(all, *lines, 0);
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
    auto decoded = stored_call(sap, object, call, json.at("values"));
    if (!decoded) {
        throw std::runtime_error(fmt::format("{}/{}: unknown call {} with these values", tables::manager_key(sap),
                                             vor::escaped(object), vor::escaped(call)));
    }
    if (!state.keep(std::move(*decoded))) {
        throw std::runtime_error("the state is too large");
    }
}

} // namespace vorsim::record
