#include "text/json.hpp"
#include "output/output.hpp"
#include "rows/contract.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorcfg::output {

namespace {

using vor::Json;

std::string line_of(const Json& json)
{
    return vor::dump(json) + '\n';
}

Json json_of(const rows::Field& field)
{
    switch (field.kind) {
    case rows::Field::Kind::number:
        return field.text.starts_with('-') ? Json(vor::number_in<std::int64_t>(field.text).value_or(0))
                                           : Json(vor::number_in<std::uint64_t>(field.text).value_or(0));
    case rows::Field::Kind::secret:
        return vor::mask;
    default:
        return field.text;
    }
}

Json json_of(const std::vector<rows::Field>& fields)
{
    Json json = Json::object();
    for (const rows::Field& field : fields) {
        json[field.name] = json_of(field);
    }
    return json;
}

Json json_of(const call::Element& element)
{
    static constexpr const char* kinds[] = {"i16", "i32", "str", "raw"};
    Json json{{"tag", element.tag}, {"kind", kinds[static_cast<std::size_t>(element.kind)]}};
    if (element.kind == call::Element::Kind::text) {
        json["value"] = element.secret ? std::string(vor::mask) : element.bytes;
    } else if (element.kind == call::Element::Kind::raw) {
        json["value"] = Json::array(std::vector<std::uint8_t>(element.bytes.begin(), element.bytes.end()));
    } else {
        json["value"] = element.number;
    }
    return json;
}

Json json_of(const call::Message& message, const call::PreparedCall& planned)
{
    static constexpr const char* ways[] = {"request", "one-way", "konfd"};
    Json json{{"way", ways[static_cast<std::size_t>(message.way)]},
              {"text", call::described(message, *planned.row, planned.values)}};
    if (message.way == call::Way::konfd) {
        json["command"] = call::without_secrets(message.command, planned.values);
        json["bytes"] = message.counted;
    } else {
        json["sap"] = message.sap;
        json["id"] = message.id;
    }
    json.add("option", message.option);
    json.add("flag", message.flag);
    if (message.chain) {
        json["elements"] = Json::array();
        for (const call::Element& element : message.elements) {
            json["elements"].push_back(json_of(element));
        }
    } else if (const auto fields = call::fields_of(message, *planned.row)) {
        json["fields"] = json_of(*fields);
    }
    json["delivered"] = message.timed_out ? Json() : Json(message.delivered); // null: not known
    json.add("answer_id", message.answer_id);
    json.add("answer_status", message.answer_status);
    json.add("answer", message.answer);
    return json;
}

// The given values by their arguments' names.
Json values_json(const call::PreparedCall& planned)
{
    Json values = Json::object();
    const auto arguments = planned.row->arguments();
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const rows::Argument& argument = arguments[i];
        const auto json_at = [&](std::size_t index) {
            const rows::Value& value = planned.values[index];
            return argument.is_number() ? Json(value.number) : Json(value.secret ? std::string(vor::mask) : value.text);
        };
        if (argument.is_list) {
            Json& items = values[argument.name] = Json::array();
            for (std::size_t item = i; item < planned.values.size(); item++) {
                items.push_back(json_at(item));
            }
        } else if (!argument.is_result() && planned.values[i].given) {
            values[argument.name] = json_at(i);
        }
    }
    return values;
}

// The values, and the words that stand for them.
void add_arguments(Json& json, const call::PreparedCall& planned)
{
    Json words = Json::object();
    const auto arguments = planned.row->arguments();
    for (std::size_t i = 0; i < arguments.size() && i < planned.values.size(); i++) {
        for (const rows::Choice& choice : arguments[i].choices) {
            if (arguments[i].is_number() && planned.values[i].given && choice.number == planned.values[i].number) {
                words[arguments[i].name] = choice.name;
            }
        }
    }
    json["arguments"] = values_json(planned);
    if (!words.empty()) {
        json["words"] = words;
    }
}

Json json_of(const rows::Argument& argument, const rows::CallContract& contract)
{
    Json json{{"name", argument.name}, {"type", rows::type_name(argument)}};
    if (argument.is_number() && !argument.is_count) {
        json["least"] = argument.range.least;
        json["most"] = argument.range.most;
    }
    json.add("most_bytes", argument.most_bytes);
    json.add("most_listed", argument.most_listed);
    if (!argument.choices.empty()) {
        json["words"] = Json::object();
        for (const rows::Choice& choice : argument.choices) {
            json["words"][choice.name] = argument.is_number() ? Json(choice.number) : Json(choice.name);
        }
    }
    json.add("secret", argument.is_secret);
    json.add("object", argument.is_object);
    json.add("list", argument.is_list);
    json.add("optional", argument.is_optional);
    json.add("counted", argument.is_count);
    json.add("result", argument.is_result());
    json.add("never_sent", !argument.is_sent);
    if (!argument.decided_by.empty()) {
        json["sent_only_where"] = Json({{std::string(argument.decided_by), argument.decided_at.number}});
    }
    json.add("about", contract.about(argument));
    return json;
}

} // namespace

std::string json_of(const call::PreparedCall& planned, const call::CallResult& report)
{
    Json json{{"schema", schema}};
    if (!planned.place.file.empty()) {
        json["file"] = planned.place.file;
        json["line"] = planned.place.line;
    }
    json["call"] = planned.row->full_name();
    add_arguments(json, planned);
    json["outcome"] = call::name_of(report.verdict.outcome);
    json["verdict"] = report.verdict.text;
    json["exit"] = call::exit_of(report.verdict.outcome);
    if (report.back.code && report.verdict.outcome != call::Outcome::no_endpoint) {
        json["code"] = *report.back.code;
    }
    json.add("status", report.manager_errno);
    json["messages"] = Json::array();
    for (const call::Message& message : report.seen.messages) {
        json["messages"].push_back(json_of(message, planned));
    }
    json["library"] = Json::array(report.library);
    if (!report.back.fields.empty() && report.verdict.outcome != call::Outcome::dry_run) {
        json["result"] = json_of(report.back.fields);
    }
    return line_of(json);
}

std::string json_of(const input::InputError& complaint)
{
    Json json{{"schema", schema}};
    if (!complaint.place.file.empty()) {
        json["file"] = complaint.place.file;
        json["line"] = complaint.place.line;
        json["column"] = complaint.place.column;
    }
    json.add("call", complaint.call);
    json.add("argument", complaint.argument);
    json["complaint"] = complaint.text;
    json["exit"] = complaint.exit;
    return line_of(json);
}

std::string json_of(const call::Tally& tally, const std::string& name, std::size_t left)
{
    return line_of({{"schema", schema},
                    {"batch", name},
                    {"accepted", tally.successes(call::Outcome::accepted)},
                    {"sent", tally.successes(call::Outcome::sent)},
                    {"unread", tally.successes(call::Outcome::unread)},
                    {"dry_run", tally.successes(call::Outcome::dry_run)},
                    {"done", tally.successes(call::Outcome::done) + tally.successes(call::Outcome::nothing_to_do)},
                    {"failed_lines", Json::array(tally.failed_lines())},
                    {"not_made", left},
                    {"exit", tally.worst}});
}

std::string checked_json(const std::string& name, std::size_t calls)
{
    return line_of({{"schema", schema}, {"check", name}, {"calls", calls}, {"exit", input::exit_ok}});
}

std::string json_of(const rows::Row& row)
{
    const rows::CallContract& contract = rows::contract_of(row);
    Json json{{"schema", schema},     {"family", row.family->name},       {"name", row.name},
              {"symbol", row.symbol}, {"summary", rows::summary_of(row)}, {"callable", row.make != nullptr}};
    if (!row.used_by.empty()) {
        json["used_by"] = row.used_by;
        return line_of(json);
    }
    json.add("usage", row.usage);
    json["marks"] = Json::array();
    static constexpr std::pair<rows::Marks, const char*> marks[] = {{rows::answer_unread, "answer_unread"},
                                                                    {rows::does_nothing, "does_nothing"},
                                                                    {rows::confirmed, "wants_yes"},
                                                                    {rows::waits, "waits"},
                                                                    {rows::acts, "acts"},
                                                                    {rows::cuts_link, "cuts_link"}};
    for (const auto& [mark, name] : marks) {
        if (row.has(mark)) {
            json["marks"].push_back(name);
        }
    }
    json.add("undone_by", row.undone_by);
    json["arguments"] = Json::array();
    for (const rows::Argument& argument : row.arguments()) {
        json["arguments"].push_back(json_of(argument, contract));
    }
    return line_of(json);
}

} // namespace vorcfg::output
