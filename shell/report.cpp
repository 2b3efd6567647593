#include "report.hpp"

#include "json.hpp"
#include "konfd_query.hpp"

namespace vorcfg {

static constexpr int schema = 1;

std::string call_name(const Row& row)
{
    return std::string(row.family) + ' ' + std::string(row.name);
}

std::string text_of(const Planned& planned, const Report& report)
{
    const std::string place = planned.place.empty() ? "" : planned.place + ": ";
    std::string text;
    for (const std::string& line : report.library) {
        text += place + "library: " + line + '\n';
    }
    for (const Message& message : report.seen.messages) {
        if (report.verdict.outcome == Outcome::dry_run) {
            text += place + "would send: " + described(message, planned.values) + '\n';
        } else if (is_query(*planned.row)) {
            text += place + "command: " + without_passwords(message.command) + '\n';
        }
    }
    text += place + call_name(*planned.row) + ": " + report.verdict.text + '\n';
    if (report.verdict.outcome == Outcome::dry_run) {
        return text;
    }
    for (const Field& field : report.back.fields) {
        text += "  " + field.name + ' ' + field.text + '\n';
    }
    return text;
}

static std::string json_element(const Element& element)
{
    static constexpr const char* kinds[] = {"i16", "i32", "str", "raw"};
    JsonObject object;
    object.number("tag", element.tag).text("kind", kinds[std::size_t(element.kind)]);
    if (element.kind == ElementKind::text) {
        object.text("value", element.secret ? mask : std::string_view(element.bytes));
    } else if (element.kind == ElementKind::raw) {
        std::vector<std::string> bytes;
        for (const char byte : element.bytes) {
            bytes.push_back(std::to_string(std::uint8_t(byte)));
        }
        object.list("value", bytes);
    } else {
        object.number("value", element.number);
    }
    return object.str();
}

static std::string json_message(const Planned& planned, const Message& message)
{
    static constexpr const char* ways[] = {"request", "one-way", "konfd"};
    JsonObject object;
    object.text("way", ways[std::size_t(message.way)]).text("text", described(message, planned.values));
    if (message.way == Way::konfd) {
        object.text("command", without_passwords(message.command)).number("bytes", std::int64_t(message.counted));
    } else {
        object.number("sap", message.sap).number("id", message.id);
    }
    if (message.option) {
        object.number("option", *message.option);
    }
    if (message.chain) {
        std::vector<std::string> elements;
        for (const Element& element : message.elements) {
            elements.push_back(json_element(element));
        }
        object.list("elements", elements);
    }
    if (message.timed_out) {
        object.raw("delivered", "null"); // nobody knows
    } else {
        object.boolean("delivered", message.delivered);
    }
    if (message.answer_id) {
        object.number("answer_id", *message.answer_id);
    }
    if (message.answer_status) {
        object.number("answer_status", *message.answer_status);
    }
    if (message.answer) {
        object.text("answer", *message.answer);
    }
    return object.str();
}

static std::string json_arguments(const Planned& planned)
{
    JsonObject object;
    for (std::size_t i = 0; i < planned.arguments.size(); i++) {
        const Argument& argument = planned.arguments[i];
        if (argument.list) {
            std::vector<std::string> listed;
            for (std::size_t item = i; item < planned.values.size(); item++) {
                listed.push_back(planned.values[item].text);
            }
            object.texts(argument.name, listed);
        } else if (argument.type != Type::text) {
            if (!argument.output) {
                object.number(argument.name, planned.values[i].number);
            }
        } else if (!argument.output) {
            object.text(argument.name, argument.secret ? mask : std::string_view(planned.values[i].text));
        }
    }
    return object.str();
}

std::string json_of(const Planned& planned, const Report& report)
{
    JsonObject object;
    object.number("schema", schema);
    if (!planned.place.empty()) {
        object.text("place", planned.place);
    }
    object.text("call", call_name(*planned.row)).raw("arguments", json_arguments(planned));
    object.text("outcome", name_of(report.verdict.outcome)).text("verdict", report.verdict.text);
    object.number("exit", exit_of(report.verdict.outcome));
    if (report.back.has_code && report.verdict.outcome != Outcome::no_endpoint) {
        object.number("code", report.back.code);
    }
    if (report.manager_errno != 0) {
        object.number("status", report.manager_errno);
    }
    std::vector<std::string> messages;
    for (const Message& message : report.seen.messages) {
        messages.push_back(json_message(planned, message));
    }
    object.list("messages", messages).texts("library", report.library);
    if (!report.back.fields.empty() && report.verdict.outcome != Outcome::dry_run) {
        JsonObject fields;
        for (const Field& field : report.back.fields) {
            fields.raw(field.name, field.number ? field.text : json_quoted(field.text));
        }
        object.raw("result", fields.str());
    }
    return object.str();
}

} // namespace vorcfg
