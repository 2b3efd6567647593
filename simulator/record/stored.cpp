#include "record/stored.hpp"

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

void store_lines(konfd::Konfd& konfd, const Json& lines, const std::string& path, int depth)
{
    for (const Json& one : lines.elements()) {
        const std::string& line = one.at("line").string();
        if (line.ends_with(vor::mask) && konfd::without_secret(line) == line && line != vor::mask) {
            throw std::runtime_error(
                fmt::format("konfd's line \"{}\" is masked (write the state with --show-secrets)", line));
        }
        const std::string command = fmt::format("-s -l \"{}\" -p {}{}", line, one.value("priority", 0), path);
        if (depth > 16 || konfd.execute(command).answer != "-o\n") {
            throw std::runtime_error(
                fmt::format("cannot store konfd's line {}", vor::quoted(line, values::longest_in_line)));
        }
        if (const Json* const under = one.find("under")) {
            store_lines(konfd, *under, fmt::format("{} \"{}\"", path, line), depth + 1);
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
    return {{"accepted", counters.accepted},
            {"complained", counters.complained},
            {"malformed", counters.malformed},
            {"foreign", counters.foreign},
            {"faulted", counters.faulted}};
}

} // namespace

Json json_of(const gateway::State& state)
{
    Json all = Json::object();
    for (const auto& [sap, objects] : state.managers()) {
        Json by_object = Json::object();
        for (const auto& [object, settings] : objects) {
            Json& calls = by_object[object] = Json::object();
            for (const gateway::State::Setting& setting : settings) {
                calls[setting.row->call] = json_of(setting.values);
            }
        }
        all[tables::manager_key(sap)] = {{"sap", sap}, {"objects", std::move(by_object)}};
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

gateway::State stored_state(const Json& held)
{
    gateway::State state;
    for (const auto& [key, manager] : held.members()) {
        const auto sap = manager.at("sap").number<std::uint16_t>();
        for (const auto& [object, calls] : manager.at("objects").members()) {
            for (const auto& [call, values] : calls.members()) {
                auto decoded = stored_call(sap, object, call, values);
                if (!decoded) {
                    throw std::runtime_error(
                        fmt::format("{}/{}: unknown call {} with these values", key, object, call));
                }
                if (!state.keep(std::move(*decoded))) {
                    throw std::runtime_error("the state is too large");
                }
            }
        }
    }
    return state;
}

void store_konfd(konfd::Konfd& konfd, const Json& lines)
{
    store_lines(konfd, lines, "", 0);
}

} // namespace vorsim::record
