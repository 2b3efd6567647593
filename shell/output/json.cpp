#include "text/json.hpp"
#include "output/output.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorcfg::output {

namespace {

using vor::Json;

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
    Json json{{"tag", element.tag}, {"kind", call::name_of(element.kind)}};
    if (element.kind == call::Element::Kind::text) {
        json["value"] = element.secret ? std::string(vor::mask) : element.bytes;
    } else if (element.kind == call::Element::Kind::raw) {
        json["value"] = Json::array(std::vector<std::uint8_t>(element.bytes.begin(), element.bytes.end()));
    } else {
        json["value"] = element.number;
    }
    return json;
}

Json json_of(const call::Message& message, const call::PreparedCall& call)
{
    Json json{{"way", call::name_of(message.way)}, {"text", call::described(message, *call.row, call.values)}};
    if (message.way == call::Way::konfd) {
        json["command"] = call::without_secrets(message.command, call.values);
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
    } else if (const auto fields = call::fields_of(message, *call.row)) {
        json["fields"] = json_of(*fields);
    }
    json["delivered"] = message.timed_out ? Json() : Json(message.delivered); // null: not known
    json.add("answer_id", message.answer_id);
    json.add("answer_status", message.answer_status);
    json.add("answer", message.answer);
    return json;
}

// The given values by their arguments' names.
Json values_json(const call::PreparedCall& call)
{
    Json values = Json::object();
    const auto arguments = call.row->arguments();
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const rows::Argument& argument = arguments[i];
        const auto json_at = [&](std::size_t index) {
            const rows::Value& value = call.values[index];
            return argument.is_number() ? Json(value.number) : Json(value.secret ? std::string(vor::mask) : value.text);
        };
        if (argument.is_list) {
            Json& items = values[argument.name] = Json::array();
            for (std::size_t item = i; item < call.values.size(); item++) {
                items.push_back(json_at(item));
            }
        } else if (!argument.is_result() && call.values[i].given) {
            values[argument.name] = json_at(i);
        }
    }
    return values;
}

// The values, and the words that stand for them.
void add_arguments(Json& json, const call::PreparedCall& call)
{
    Json words = Json::object();
    const auto arguments = call.row->arguments();
    for (std::size_t i = 0; i < arguments.size() && i < call.values.size(); i++) {
        for (const rows::Choice& choice : arguments[i].choices) {
            if (arguments[i].is_number() && call.values[i].given && choice.number == call.values[i].number) {
                words[arguments[i].name] = choice.name;
            }
        }
    }
    json["arguments"] = values_json(call);
    if (!words.empty()) {
        json["words"] = words;
    }
}

} // namespace

std::string json_of(const call::PreparedCall& call, const call::CallResult& result)
{
    Json json = record("call", call.place);
    json["call"] = call.row->full_name();
    add_arguments(json, call);
    json["outcome"] = call::name_of(result.verdict.outcome);
    json["verdict"] = result.verdict.text;
    json.add("hint", result.verdict.hint);
    json["exit"] = call::exit_of(result.verdict.outcome);
    if (result.back.code && result.verdict.outcome != call::Outcome::no_endpoint) {
        json["code"] = *result.back.code;
    }
    json.add("status", result.manager_errno);
    json["messages"] = Json::array();
    for (const call::Message& message : result.seen.messages) {
        json["messages"].push_back(json_of(message, call));
    }
    json["library"] = Json::array(result.library);
    if (!result.back.fields.empty() && result.verdict.outcome != call::Outcome::dry_run) {
        json["result"] = json_of(result.back.fields);
    }
    return line_of(json);
}

std::string json_of(const input::InputError& error)
{
    Json json = record("error", error.place);
    json.add("call", error.call);
    json.add("argument", error.argument);
    json["complaint"] = error.text;
    if (!error.from.file.empty()) {
        json["from"] = {{"file", error.from.file}, {"line", error.from.line}};
        json["from"].add("column", error.from.column);
    }
    json.add("hint", error.hint);
    json["exit"] = error.exit;
    return line_of(json);
}

std::string json_of(const call::Tally& tally, const std::string& name, std::size_t left)
{
    Json json = record("batch", {name});
    for (const auto& [field, number] :
         {std::pair{"accepted", tally.successes(call::Outcome::accepted)},
          {"sent", tally.successes(call::Outcome::sent)},
          {"unread", tally.successes(call::Outcome::unread)},
          {"dry_run", tally.successes(call::Outcome::dry_run)},
          {"done", tally.successes(call::Outcome::done) + tally.successes(call::Outcome::nothing_to_do)}}) {
        json[field] = number;
    }
    json["failed_lines"] = Json::array(tally.failed_lines());
    json["not_made"] = left;
    json["exit"] = tally.worst;
    return line_of(json);
}

std::string text_json(std::string_view text)
{
    Json json = record("text");
    json["text"] = text;
    return line_of(json);
}

std::string checked_json(const std::string& name, std::size_t calls, std::size_t rows, std::size_t rows_without_errors)
{
    Json json = record("check", {name});
    json["calls"] = calls;
    if (rows != 0) {
        json["rows"] = rows;
        json["rows_without_errors"] = rows_without_errors;
    }
    json["exit"] = rows == rows_without_errors ? input::exit_ok : input::exit_usage;
    return line_of(json);
}

} // namespace vorcfg::output
