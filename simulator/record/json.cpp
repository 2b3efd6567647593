#include "record/json.hpp"

#include <utility>

#include <fmt/core.h>

#include "text/json.hpp"
#include "text/parse.hpp"

namespace vorsim::record {
namespace {

using vor::Json;

// An id as the journal writes it.
template <class Number>
struct Hexadecimal {
    Number& number;
};
template <class Number>
Hexadecimal(Number&) -> Hexadecimal<Number>;

// Calls `visit` with each member in the order in which they are written: name, value and whether it is written.
template <class AnyRecord, class Visit>
void each_member(AnyRecord& record, Visit visit, bool bytes)
{
    using Kind = values::Record::Kind;
    const auto if_any = [&](const char* name, auto& value) { visit(name, value, !value.empty()); };
    const auto if_known = [&](const char* name, auto& value) { visit(name, value, value.has_value()); };
    const auto if_kept = [&](const char* name, auto& value) { visit(name, value, bytes && value.has_value()); };
    visit("seq", record.seq, true);
    visit("time", record.time, true);
    if_known("took", record.took);
    switch (record.kind) {
    case Kind::message:
        visit("sap", record.sap, true);
        visit("source", record.source, true);
        visit("id", Hexadecimal{record.id}, true);
        if_any("call", record.call);
        if_any("object", record.object);
        visit("values", record.values, !record.call.empty());
        if_any("answer", record.answer_values);
        if_any("complaint", record.complaint);
        visit("status", record.status, record.answer_values.empty());
        if_known("fault", record.fault);
        visit("delivered", record.delivered, !record.delivered);
        visit("awaits", record.awaits, bytes);
        if_kept("meta_data", record.meta_data);
        if_kept("payload", record.payload);
        visit("refused", record.refused, record.refused);
        if_any("via", record.via);
        visit("answer_id", Hexadecimal{record.answer_id}, bytes && record.answer_id.has_value());
        if_kept("answer_payload", record.answer_payload);
        if_any("line", record.line);
        visit("accepted", record.accepted, true);
        visit("complained", record.complained, true);
        break;
    case Kind::konfd:
        visit("client", record.client, true);
        visit("konfd", record.commands, true);
        visit("answer", record.answer, true);
        if_any("complaint", record.complaint);
        if_any("shown", record.shown);
        if_known("fault", record.fault);
        visit("accepted", record.accepted, true);
        visit("complained", record.complained, true);
        if_kept("text", record.text);
        if_kept("answer_text", record.answer_text);
        visit("delivered", record.delivered, !record.delivered);
        if_any("line", record.line);
        break;
    default:
        visit("sap", record.sap, true);
        visit(record.kind == Kind::foreign ? "foreign" : "malformed", record.why, true);
        if_any("via", record.via);
        if_kept("datagram", record.datagram);
        if_any("line", record.line);
    }
}

// ---- Writing ----------------------------------------------------------------

template <class Plain>
Json json(const Plain& plain)
{
    return plain;
}
Json json(const std::vector<values::Value>& values)
{
    return json_of(values);
}
Json json(const values::Record::Fault& fault)
{
    return {{"number", fault.number}, {"rule", fault.rule}};
}
Json json(const values::Scalar& scalar)
{
    return std::visit([](const auto& held) { return Json(held); }, scalar);
}
Json json(const values::List& list)
{
    Json elements = Json::array();
    for (const values::Scalar& scalar : list) {
        elements.push_back(json(scalar));
    }
    return elements;
}
template <class Value>
Json json(const std::optional<Value>& value)
{
    return value ? json(*value) : Json();
}
Json json(const Hexadecimal<const std::uint32_t>& id)
{
    return fmt::format("{:#x}", id.number);
}
Json json(const Hexadecimal<const std::optional<std::uint32_t>>& id)
{
    return json(Hexadecimal{*id.number});
}

// ---- Reading ----------------------------------------------------------------

void read(const Json& json, std::string& text)
{
    text = json.string();
}
void read(const Json& json, bool& truth)
{
    truth = json.boolean();
}
template <std::integral Number>
void read(const Json& json, Number& number)
{
    number = json.number<Number>();
}
void read(const Json& json, std::vector<values::Value>& values)
{
    for (const auto& [name, data] : json.members()) {
        values.push_back({.name = name, .text = {}, .data = data_of(data)});
    }
}
void read(const Json& json, values::Record::Fault& fault)
{
    fault = {json.at("number").number<unsigned>(), json.at("rule").string()};
}
template <class Value>
void read(const Json& json, std::optional<Value>& value)
{
    value.reset();
    if (!json.is_null()) {
        read(json, value.emplace());
    }
}
template <class Number>
void read(const Json& json, Hexadecimal<Number> id)
{
    const auto number = vor::number_in<std::uint32_t>(json.string());
    id.number = number ? *number : throw vor::JsonError(fmt::format("{} is not an id", vor::dump(json)));
}

values::Record::Kind kind_of(const Json& json)
{
    constexpr std::pair<const char*, values::Record::Kind> kinds[] = {{"konfd", values::Record::Kind::konfd},
                                                                      {"malformed", values::Record::Kind::malformed},
                                                                      {"foreign", values::Record::Kind::foreign}};
    for (const auto& [name, kind] : kinds) {
        if (json.contains(name)) {
            return kind;
        }
    }
    return values::Record::Kind::message;
}

// Records of the first version have no line.
std::string line_of_version_1(const Json& json, const values::Record& record)
{
    const char* const end = json.contains("status") ? "status" : "answer";
    const std::string id = fmt::format("{:#x}", record.id);
    const std::string what = record.kind == values::Record::Kind::konfd ? fmt::format("konfd {}", record.commands)
                             : record.call.empty() ? fmt::format("strict: {}: {}", id, record.complaint)
                                                   : fmt::format("{} {} {}", id, record.call, record.object);
    const std::string outcome = json.contains(end) ? vor::dump(json[end]) : "";
    return fmt::format("{} -> {}{}", what, json.contains("status") ? "status " : "", outcome);
}

values::Scalar scalar_of(const Json& json)
{
    if (json.is_string()) {
        return json.string();
    }
    if (json.type() == Json::Type::natural) {
        return json.number<std::uint64_t>();
    }
    return json.number<std::int64_t>();
}

} // namespace

Json json_of(const std::vector<values::Value>& values)
{
    Json object = Json::object();
    for (const values::Value& value : values) {
        object[value.name] = std::visit([](const auto& data) { return json(data); }, value.data);
    }
    return object;
}

std::variant<values::Scalar, values::List> data_of(const Json& json)
{
    if (!json.is_array()) {
        return scalar_of(json);
    }
    values::List list;
    for (const Json& element : json.elements()) {
        list.push_back(scalar_of(element));
    }
    return list;
}

std::string journal_head(const std::string& time, std::uint64_t seed, bool show_secrets)
{
    return vor::dump({{"journal", journal_version}, {"time", time}, {"seed", seed}, {"secrets", show_secrets}});
}

std::string json_line(const values::Record& record, Extent extent)
{
    Json object = Json::object();
    const auto write = [&object](const char* name, const auto& value, bool written) {
        if (written) {
            object[name] = json(value);
        }
    };
    each_member(record, write, extent == Extent::whole);
    return vor::dump(object);
}

Line read_line(std::string_view text)
{
    const Json json = Json::parse(text);
    json.members();
    Line line{.text = std::string(text)};
    if (const Json* const version = json.find("journal")) {
        line.version = vor::dump(*version);
        return line;
    }
    line.record.kind = kind_of(json);
    const auto take = [&](const char* name, auto&& value, bool) {
        try {
            if (const Json* const found = json.find(name)) {
                read(*found, value);
            }
        } catch (const vor::JsonError& error) {
            line.damage = fmt::format("{}: {}", name, error.what());
        }
    };
    each_member(line.record, take, true);
    if (line.record.kind == values::Record::Kind::message) {
        for (const char* const name : {"sap", "source", "id"}) {
            line.complete = line.complete && json.contains(name);
        }
    }
    if (line.record.line.empty()) {
        line.record.line = line_of_version_1(json, line.record);
    }
    return line;
}

std::string rewritten(const Line& line)
{
    return vor::dump(Json::parse(line.text));
}

} // namespace vorsim::record
