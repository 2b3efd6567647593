// The interface as data: each fact from the row, the header or the measurement that has it.
#include <algorithm>
#include <bit>

#include <device_mgmt/code_text.h>
#include <device_mgmt/version.h>
#include <fmt/core.h>

#include "call/chain_form.hpp"
#include "call/wire.hpp"
#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/json.hpp"
#include "text/table.hpp"
#include "text/text.hpp"

namespace vorcfg::output {

namespace {

using vor::Json;

constexpr std::pair<rows::Marks, const char*> mark_names[] = {{rows::answer_unread, "answer_unread"},
                                                              {rows::does_nothing, "does_nothing"},
                                                              {rows::confirmed, "requires_yes"},
                                                              {rows::waits, "waits"},
                                                              {rows::acts, "acts"},
                                                              {rows::cuts_link, "cuts_link"}};

bool is_query(const rows::Row& row)
{
    return row.channel == rows::Channel::manager &&
           (row.answers_record || std::ranges::any_of(row.arguments(), &rows::Argument::is_result));
}

std::string_view role_of(const rows::Row& row)
{
    return row.make == nullptr                  ? "part"
           : row.has(rows::does_nothing)        ? "nothing"
           : row.channel == rows::Channel::none ? "local"
           : row.has(rows::acts)                ? "act"
           : is_query(row)                      ? "query"
                                                : "setting";
}

std::string_view kind_of(const rows::Argument& argument)
{
    switch (argument.kind) {
    case rows::Kind::text:
        return argument.choices.empty() ? "text" : "word";
    case rows::Kind::ipv4:
        return "ipv4";
    case rows::Kind::decimal:
        return "decimal";
    case rows::Kind::result:
    case rows::Kind::untouched:
        return "result";
    default:
        return "number";
    }
}

// Empty where its call answers a record.
std::string_view c_type_of(rows::Type type)
{
    static constexpr std::string_view names[] = {"vor_uchar", "vor_char",   "vor_int16", "vor_uint16",
                                                 "vor_int32", "vor_uint32", "vor_char*", ""};
    return names[static_cast<std::size_t>(type)];
}

const call::Wire& wire_of(const rows::Row& row)
{
    static const call::Wire none;
    const bool sends = row.make != nullptr && row.channel != rows::Channel::none;
    return sends ? call::wire_of(row) : none;
}

bool is_never_sent(const rows::Row& row, const rows::Argument& argument)
{
    const call::Wire& wire = wire_of(row);
    return wire.messages.empty() ? !argument.is_sent : wire.is_unsent(argument);
}

// Those that its header names, and those that were seen.
std::vector<std::int32_t> codes_of(const rows::Row& row)
{
    std::vector<std::int32_t> codes = rows::contract_of(row).codes();
    std::ranges::copy(wire_of(row).codes, std::back_inserter(codes));
    std::ranges::sort(codes, std::greater());
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
    return codes;
}

// Of a call that sends nothing, what its header says is all that there is.
std::vector<std::string_view> outcomes_of(const rows::Row& row)
{
    std::vector<std::string_view> names;
    if (row.make == nullptr) {
        return names;
    }
    for (const call::Outcome outcome : wire_of(row).outcomes) {
        names.push_back(call::name_of(outcome));
    }
    if (names.empty()) {
        std::vector<std::int32_t> codes = rows::contract_of(row).codes();
        codes.insert(codes.begin(), codes.empty() ? 1 : 0, VOR_CODE_DONE);
        for (const std::int32_t code : codes) {
            names.push_back(call::name_of(call::judged(row, {.code = code, .fields = {}}, 0, {}).outcome));
        }
        names.erase(std::unique(names.begin(), names.end()), names.end());
    }
    return names;
}

Json json_of(const rows::Row& row, const rows::Argument& argument, const rows::CallContract& contract)
{
    Json json{{"name", argument.name}, {"kind", kind_of(argument)}};
    json.add("c_type", c_type_of(argument.type));
    if (argument.is_number() && !argument.is_count) {
        json["minimum"] = argument.range.least;
        json["maximum"] = argument.range.most;
    }
    json.add("longest", argument.most_bytes);
    json.add("longest_list", argument.most_listed);
    for (const rows::Choice& choice : argument.choices) {
        json["words"][choice.name] = argument.is_number() ? Json(choice.number) : Json(choice.name);
    }
    json.add("unit", contract.unit(argument));
    for (const auto& [flag, is_set] : {std::pair{"secret", argument.is_secret},
                                       {"object", argument.is_object},
                                       {"list", argument.is_list},
                                       {"optional", argument.is_optional},
                                       {"counted", argument.is_count},
                                       {"never_sent", is_never_sent(row, argument)},
                                       {"passed_unchanged", contract.passes_unchanged(argument)}}) {
        json.add(flag, is_set);
    }
    if (!argument.decided_by.empty()) {
        json["sent_only_where"] = Json({{std::string(argument.decided_by), argument.decided_at.number}});
    }
    json.add("about", contract.meaning(argument));
    return json;
}

// Of a call that is not made on its own: its header alone knows them.
Json declared_arguments(const rows::CallContract& contract)
{
    Json arguments = Json::array();
    for (const auto& [name, about] : contract.arguments) {
        std::string_view type = contract.declaration;
        type.remove_prefix(type.find('(') + 1);
        while (type.find(',') < std::min(type.find(' ' + name + ','), type.find(' ' + name + ')'))) {
            type.remove_prefix(type.find(", ") + 2);
        }
        arguments.push_back({{"name", name}, {"c_type", type.substr(0, type.find(' ' + name))}, {"about", about}});
    }
    return arguments;
}

// --- What is sent ---------------------------------------------------------------------

std::string_view kind_of(rows::RecordField::Kind kind)
{
    static constexpr std::string_view names[] = {"number", "address", "text", "text"};
    return names[static_cast<std::size_t>(kind)];
}

Json json_of(const call::WirePart& part)
{
    Json json = Json::object();
    if (part.field != nullptr) {
        json["name"] = part.field->name;
        json["offset"] = part.field->offset;
        json["size"] = part.field->size;
        json["kind"] = kind_of(part.field->kind);
    } else {
        json["tag"] = part.tag;
        json["kind"] = call::name_of(part.kind);
        json.add("address", part.argument->kind == rows::Kind::ipv4);
        json.add("each", part.argument->is_list);
    }
    json["from"] = part.argument->name;
    return json;
}

Json json_of(const call::WireAnswer& answer, const rows::Row& row)
{
    Json json{{"ids", Json::array(answer.ids)},
              {"id_bits", answer.id_bits},
              {"carries", row.answers_record ? "record" : "status"}};
    const std::string& declaration = rows::contract_of(row).declaration;
    for (const rows::DeclaredRecord& record : rows::declared_records()) {
        if (row.answers_record && declaration.find(record.name + '*') != std::string::npos) {
            json["record"] = record.name;
        }
    }
    if (!row.answers_record) {
        json["accepted"] = Json::array(answer.statuses);
    }
    return json;
}

Json json_of(const call::Wire& wire, const rows::Row& row)
{
    using Place = call::WirePart::Place;
    const call::Message& message = wire.messages.front();
    Json json{{"way", call::name_of(message.way)}};
    if (message.way != call::Way::konfd) {
        json["sap"] = message.sap;
        json["manager"] = call::manager_name(message.sap);
        json["id"] = message.id;
    }
    json.add("computed", wire.computed);
    Json parts = Json::array();
    for (const call::WirePart& part : wire.parts) {
        if (part.place == Place::sap) {
            json["sap_from"] = part.argument->name;
        } else if (part.place == Place::option || part.place == Place::flag) {
            json[part.place == Place::option ? "option_from" : "flag_from"] = part.argument->name;
        } else {
            parts.push_back(json_of(part));
        }
    }
    if (message.chain) {
        json["elements"] = parts;
    } else if (message.way != call::Way::konfd) {
        json["record"] = {{"size", message.record.size()}, {"fields", parts}};
    }
    json.add("send_unchecked", wire.send_unchecked);
    if (wire.answer) {
        json["answer"] = json_of(*wire.answer, row);
    }
    json["example"] = Json::array();
    for (const call::Message& sent : wire.messages) {
        json["example"].push_back(call::described(sent, row, call::prepare_example(row).values));
    }
    return json;
}

} // namespace

Json description_of(const rows::Row& row)
{
    const rows::CallContract& contract = rows::contract_of(row);
    const call::Wire& wire = wire_of(row);
    Json json = record("row");
    json["family"] = row.family->name;
    json["name"] = row.name;
    json["symbol"] = row.symbol;
    json["summary"] = rows::summary_of(row);
    json["role"] = role_of(row);
    json["callable"] = row.make != nullptr;
    json["declaration"] = contract.declaration;
    json.add("used_by", row.used_by);
    json.add("usage", row.usage);
    for (const auto& [mark, flag] : mark_names) {
        json.add(flag, row.has(mark));
    }
    json.add("prints", wire.prints);
    if (row.is_setting() && row.make != nullptr) {
        json["setting"] = row.setting_name();
    }
    if (row.make == nullptr) {
        json["arguments"] = declared_arguments(contract);
    } else {
        json["arguments"] = Json::array();
        for (const rows::Argument& argument : row.arguments()) {
            json["arguments"].push_back(json_of(row, argument, contract));
        }
    }
    json["codes"] = Json::array(codes_of(row));
    json["returns"] = contract.returned;
    if (row.make != nullptr) {
        json["outcomes"] = Json::array(outcomes_of(row));
        json["example"] = rows::example_call(row);
    }
    if (!wire.messages.empty()) {
        json["wire"] = json_of(wire, row);
    }
    return json;
}

std::string json_of(const rows::Row& row)
{
    return line_of(description_of(row));
}

namespace {

Json json_of(const call::ChainForm& form)
{
    Json kinds = Json::object();
    for (const auto& [kind, number] : form.kinds) {
        kinds[call::name_of(kind)] = number;
    }
    return {{"high_byte_first", form.has_high_byte_first},
            {"header_size", form.header_size},
            {"tag_offset", form.tag_offset},
            {"kind_offset", form.kind_offset},
            {"length_offset", form.length_offset},
            {"text_end", form.text_end},
            {"kinds", kinds},
            {"most_elements", TLV_CHAIN_CAPACITY}};
}

} // namespace

Json description()
{
    Json json = record("description");
    json["version"] =
        fmt::format("{}.{}.{}", DEVICE_MGMT_VERSION_MAJOR, DEVICE_MGMT_VERSION_MINOR, DEVICE_MGMT_VERSION_PATCH);
    if (const auto form = call::chain_form()) {
        json["chain"] = json_of(*form);
    }
    json["status"] = {{"high_byte_first", std::endian::native == std::endian::big}, {"size", sizeof(vor_int32)}};
    for (const char* const section : {"managers", "codes", "outcomes", "records", "calls"}) {
        json[section] = Json::array();
    }
    for (const call::Manager& manager : call::managers()) {
        json["managers"].push_back({{"sap", manager.sap}, {"name", manager.name}});
    }
    for (const rows::DeclaredCode& code : rows::declared_codes()) {
        const std::string text = device_mgmt_code_text(code.number, 0);
        const std::string with_status = device_mgmt_code_text(code.number, 1);
        Json each{{"code", code.number}, {"name", code.name}, {"text", text}};
        each.add("text_with_status", with_status != text ? with_status : "");
        json["codes"].push_back(each);
    }
    for (std::size_t i = 0; i < call::outcome_count; i++) {
        const auto outcome = static_cast<call::Outcome>(i);
        json["outcomes"].push_back(
            {{"name", call::name_of(outcome)}, {"exit", call::exit_of(outcome)}, {"text", call::about(outcome)}});
    }
    for (const rows::DeclaredRecord& record : rows::declared_records()) {
        Json fields = Json::array();
        for (const rows::DeclaredField& field : record.fields) {
            Json each{{"name", field.name}, {"c_type", field.type}, {"offset", field.offset}, {"size", field.size}};
            each.add("about", field.about);
            fields.push_back(std::move(each));
        }
        json["records"].push_back({{"name", record.name}, {"size", record.size}, {"fields", fields}});
    }
    for (const rows::Family* const family : rows::families()) {
        for (const rows::Row& row : family->rows) {
            json["calls"].push_back(description_of(row));
        }
    }
    return json;
}

std::string description_json()
{
    return line_of(description());
}

// --- As text ----------------------------------------------------------------------------

namespace {

// "element 4 i16", "field ip_address at 4, 4 bytes"
std::string place_of(const call::Wire& wire, const rows::Argument& argument)
{
    std::vector<std::string> places;
    for (const call::WirePart& part : wire.parts) {
        if (part.argument == &argument) {
            const std::string name = call::name_of(part);
            places.push_back(
                part.field != nullptr
                    ? fmt::format("{} at {}, {}", name, part.field->offset, vor::counted(part.field->size, "byte"))
                : part.place == call::WirePart::Place::element
                    ? fmt::format("{} {}{}", name, call::name_of(part.kind), argument.is_list ? " each" : "")
                    : name);
        }
    }
    return vor::joined(places, ", ");
}

std::string argument_text(const rows::Row& row, const rows::Argument& argument)
{
    std::string text = argument.is_given() ? rows::kind_text(argument) : argument.is_count ? "counted" : "result";
    const std::string_view unit = rows::contract_of(row).unit(argument);
    const std::string place = place_of(wire_of(row), argument);
    text += unit.empty() ? "" : fmt::format("; unit: {}", unit);
    text += argument.is_object ? "; object" : "";
    text += argument.is_optional ? "; optional" : "";
    text += place.empty() ? "" : fmt::format("; sent as {}", place);
    text += is_never_sent(row, argument) && argument.is_sent ? "; never sent" : "";
    return text;
}

std::string lines_of(const std::vector<vor::Cells>& rows, const vor::Screen& screen)
{
    vor::Table table(screen);
    std::string text;
    for (const vor::Cells& row : rows) {
        table.fit(row);
    }
    for (const vor::Cells& row : rows) {
        text += table.text_of(row);
    }
    return text;
}

std::string answer_text(const call::WireAnswer& answer, const rows::Row& row)
{
    if (answer.ids.empty()) {
        return "never read";
    }
    std::vector<std::string> ids;
    for (const std::uint32_t id : answer.ids) {
        ids.push_back(fmt::format("0x{:x}", id));
    }
    std::vector<std::string> statuses;
    for (const std::int32_t status : answer.statuses) {
        statuses.push_back(std::to_string(status));
    }
    return fmt::format("{}{}; {}", answer.id_bits == 0 ? "any message" : vor::alternatives(ids),
                       answer.id_bits == 16 ? " in its low 16 bits" : "",
                       row.answers_record ? "a record"
                                          : fmt::format("status {} is accepted", vor::alternatives(statuses)));
}

} // namespace

std::string description_text(const rows::Row& row, const vor::Screen& screen)
{
    const rows::CallContract& contract = rows::contract_of(row);
    const call::Wire& wire = wire_of(row);
    std::vector<vor::Cells> arguments;
    std::vector<vor::Cells> facts;
    const auto add = [&](std::string_view what, std::string about) {
        if (!about.empty()) {
            facts.push_back({{fmt::format("  {}", what)}, {std::move(about)}});
        }
    };
    for (const rows::Argument& argument : row.arguments()) {
        arguments.push_back({{fmt::format("    {}", argument.name)}, {argument_text(row, argument)}});
    }
    add(role_of(row), row.used_by.empty() ? row.is_setting() ? row.setting_name() : std::string(row.symbol)
                                          : fmt::format("not made on its own; used by {}", row.used_by));
    for (const call::Message& message : wire.messages) {
        add("message", call::described(message, row, call::prepare_example(row).values));
    }
    add("computed", wire.computed);
    add("answer", wire.answer ? answer_text(*wire.answer, row) : "");
    std::vector<std::string> marks;
    for (const auto& [mark, name] : mark_names) {
        if (row.has(mark)) {
            marks.emplace_back(name);
            std::ranges::replace(marks.back(), '_', ' ');
        }
    }
    if (wire_of(row).prints) {
        marks.emplace_back("prints");
    }
    add("marks", vor::joined(marks, ", "));
    add("returns", contract.returned);
    add("outcomes", vor::joined(outcomes_of(row), ", "));
    add("example", row.make != nullptr ? rows::example_call(row) : "");
    return fmt::format("{}: {}\n{}{}{}", row.full_name(), rows::summary_of(row),
                       vor::paragraph(contract.declaration, screen, "  "), lines_of(arguments, screen),
                       lines_of(facts, screen));
}

} // namespace vorcfg::output
