#include "record/stored.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <fmt/core.h>

#include "record/json.hpp"
#include "tables/managers.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim {

using vor::Json;

namespace {

std::vector<std::string_view> value_names(const Row& row)
{
    std::vector<std::string_view> names;
    if (!row.layout.lead.empty()) {
        names.push_back(row.layout.lead);
    }
    for (const Field& field : row.layout.fields()) {
        names.push_back(field.name);
    }
    return names;
}

// A list that held nothing was not shown.
bool has_these(const Row& row, const Json& values)
{
    const auto names = value_names(row);
    const auto known = [&names](const auto& item) { return std::ranges::find(names, item.first) != names.end(); };
    const auto shown = [&](std::string_view name) {
        const auto fields = row.layout.fields();
        return values.contains(name) || (!fields.empty() && fields.back().repeated && fields.back().name == name);
    };
    return std::ranges::all_of(values.members(), known) && std::ranges::all_of(names, shown);
}

const Row* row_of(std::uint16_t sap, const std::string& call, const Json& values)
{
    const auto all = all_rows();
    const auto found = std::ranges::find_if(all, [&](const ListedRow& listed) {
        return listed.row->call == call && listed.serves(sap) && has_these(*listed.row, values);
    });
    return found == all.end() ? nullptr : found->row;
}

Value value_of(const Row& row, std::string_view name, const Json& json)
{
    const auto fields = row.layout.fields();
    const auto field = std::ranges::find(fields, name, &Field::name);
    const bool plain =
        field != fields.end() && (field->display == Display::address || field->display == Display::secret);
    Value value{.name = std::string(name),
                .text = {},
                .data = data_of(json),
                .in_object = row.object.find(fmt::format("{{{}}}", name)) != row.object.npos};
    const auto add = [&](const Scalar& scalar) {
        const auto* const text = std::get_if<std::string>(&scalar);
        value.text += value.text.empty() ? "" : ",";
        if (text == nullptr) {
            std::visit([&](const auto& held) { value.text += fmt::format("{}", held); }, scalar);
        } else {
            value.text += plain ? *text : vor::quoted(*text, longest_in_line);
        }
    };
    if (const auto* const list = std::get_if<List>(&value.data)) {
        std::ranges::for_each(*list, add);
    } else {
        add(std::get<Scalar>(value.data));
    }
    return value;
}

void store_lines(konfd::Konfd& konfd, const Json& lines, const std::string& path, int depth)
{
    for (const Json& one : lines.elements()) {
        const std::string& line = one.at("line").string();
        if (line.ends_with(vor::mask) && konfd::without_secret(line) == line && line != vor::mask) {
            throw std::runtime_error(
                fmt::format("konfd's line \"{}\" is masked (--show-secrets writes a state that can be loaded)", line));
        }
        const std::string command = fmt::format("-s -l \"{}\" -p {}{}", line, one.value("priority", 0), path);
        if (depth > 16 || konfd.execute(command).answer != "-o\n") {
            throw std::runtime_error(
                fmt::format("konfd's line {} cannot be stored", vor::quoted(line, longest_in_line)));
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

Json json_of(const State& state)
{
    Json all = Json::object();
    for (const auto& [sap, objects] : state.managers()) {
        Json by_object = Json::object();
        for (const auto& [object, settings] : objects) {
            Json& calls = by_object[object] = Json::object();
            for (const State::Setting& setting : settings) {
                calls[setting.row->call] = json_of(setting.values);
            }
        }
        all[manager_key(sap)] = {{"sap", sap}, {"objects", std::move(by_object)}};
    }
    return all;
}

Json json_of(const Counters& counters, std::uint64_t lines_lost, const State& state, const konfd::Konfd& konfd)
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

Json json_of(const std::vector<faults::Plan::Listed>& rules)
{
    Json all = Json::array();
    for (const faults::Plan::Listed& rule : rules) {
        all.push_back({{"number", rule.number},
                       {"rule", rule.rule},
                       {"acted", rule.acted},
                       {"concerned", rule.concerned},
                       {"over", rule.over}});
    }
    return all;
}

State stored_state(const Json& held)
{
    State state;
    for (const auto& [key, manager] : held.members()) {
        const auto sap = manager.at("sap").number<std::uint16_t>();
        for (const auto& [object, calls] : manager.at("objects").members()) {
            for (const auto& [call, values] : calls.members()) {
                const Row* const row = row_of(sap, call, values);
                if (row == nullptr) {
                    throw std::runtime_error(
                        fmt::format("{}/{}: no message of this manager is {} with these values", key, object, call));
                }
                Decoded decoded{.sap = sap, .row = row, .object = object};
                for (const std::string_view name : value_names(*row)) {
                    if (values.contains(name)) {
                        decoded.values.push_back(value_of(*row, name, values[name]));
                    }
                }
                if (!state.keep(std::move(decoded))) {
                    throw std::runtime_error("the state is more than can be kept");
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

} // namespace vorsim
