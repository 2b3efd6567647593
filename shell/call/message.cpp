// Messages as text.
#include "call/message.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vorcfg::call {

namespace {

constexpr Manager all_managers[] = {
    {0, "the platform"}, {1, "sysmgr"},     {2, "platmgr"},  {3, "restmgr"},    {4, "gpiomgr"},      {5, "adcmgr"},
    {6, "blemgr"},       {7, "ethmgr"},     {8, "sub1gmgr"}, {9, "svcmgr"},     {10, "datamgr"},     {12, "gsmmgr"},
    {13, "appmgr"},      {14, "sensormgr"}, {15, "mqttmgr"}, {16, "serialmgr"}, {18, "wifimonitor"}, {19, "canmgr"},
    {20, "modbusmgr"},   {21, "snmpmgr"},   {22, "ntpmgr"},  {23, "pcumgr"},    {24, "loramgr"},     {240, "towermon"},
};

template <class T>
std::string number_text(const char* at)
{
    T value;
    std::memcpy(&value, at, sizeof value);
    return std::to_string(value);
}

std::string number_text(const rows::RecordField& field, const char* at)
{
    switch (field.size) {
    case 1:
        return number_text<std::uint8_t>(at);
    case 2:
        return field.is_signed ? number_text<std::int16_t>(at) : number_text<std::uint16_t>(at);
    default:
        return field.is_signed ? number_text<std::int32_t>(at) : number_text<std::uint32_t>(at);
    }
}

rows::Field field_of(const rows::RecordField& field, const std::string& record)
{
    const char* const at = record.data() + field.offset;
    const std::string name(field.name);
    if (static_cast<std::size_t>(field.offset) + field.size > record.size()) {
        return {name, "?", rows::Field::Kind::word};
    }
    switch (field.kind) {
    case rows::RecordField::Kind::number:
        return {name, number_text(field, at)};
    case rows::RecordField::Kind::address: {
        std::uint32_t address;
        std::memcpy(&address, at, sizeof address);
        return {name, vor::dotted(address), rows::Field::Kind::word};
    }
    case rows::RecordField::Kind::text:
        return {name, std::string(at, strnlen(at, field.size)), rows::Field::Kind::text};
    default:
        return {name, "", rows::Field::Kind::secret};
    }
}

} // namespace

std::string_view name_of(Element::Kind kind)
{
    static constexpr std::string_view names[] = {"i16", "i32", "str", "raw"};
    return names[static_cast<std::size_t>(kind)];
}

std::string_view name_of(Way way)
{
    static constexpr std::string_view names[] = {"request", "one-way", "konfd"};
    return names[static_cast<std::size_t>(way)];
}

std::span<const Manager> managers()
{
    return all_managers;
}

std::string manager_name(std::uint16_t sap)
{
    const auto found = std::ranges::find(all_managers, sap, &Manager::sap);
    return found != std::end(all_managers) ? std::string(found->name) : fmt::format("SAP {}", sap);
}

std::optional<std::vector<rows::Field>> fields_of(const Message& message, const rows::Row& row)
{
    if (row.record.empty() || message.record.empty()) {
        return std::nullopt;
    }
    std::int32_t option = 0;
    std::memcpy(&option, message.record.data(), std::min(sizeof option, message.record.size()));
    std::vector<rows::Field> fields;
    for (const rows::RecordField& field : row.record) {
        if (field.option == 0 || field.option == option) {
            fields.push_back(field_of(field, message.record));
        }
    }
    return fields;
}

namespace {

// The word that stands for a number, behind it.
std::string choice_text(std::string_view name, std::string_view number, const rows::Row& row)
{
    for (const rows::Argument& argument : row.arguments()) {
        for (const rows::Choice& choice : argument.choices) {
            if (argument.is_number() && argument.name == name && std::to_string(choice.number) == number) {
                return fmt::format(" ({})", choice.name);
            }
        }
    }
    return "";
}

std::string field_text(const rows::Field& field, const rows::Row& row)
{
    switch (field.kind) {
    case rows::Field::Kind::number:
        return fmt::format(" | {} {}{}", field.name, field.text, choice_text(field.name, field.text, row));
    case rows::Field::Kind::word:
        return fmt::format(" | {} {}", field.name, field.text);
    case rows::Field::Kind::text:
        return fmt::format(" | {} {}", field.name, vor::quoted(field.text));
    default:
        return fmt::format(" | {} {}", field.name, vor::mask);
    }
}

std::string record_text(const Message& message, const rows::Row& row, std::span<const rows::Value> values)
{
    const auto fields = fields_of(message, row);
    if (!fields) {
        const bool holds_secret = std::ranges::any_of(values, &rows::Value::secret);
        return fmt::format(" | {} bytes {}", message.record.size(),
                           holds_secret ? std::string(vor::mask) : vor::hexadecimal(message.record));
    }
    std::string text;
    for (const rows::Field& field : *fields) {
        text += field_text(field, row);
    }
    return text;
}

// An address is sent as a number; the argument that it came from shows that it is one.
std::string number_text(const Element& element, std::span<const rows::Value> values)
{
    for (const rows::Value& value : values) {
        in_addr address{};
        if (element.kind == Element::Kind::int32 && value.text.find('.') != std::string::npos &&
            inet_pton(AF_INET, value.text.c_str(), &address) == 1 &&
            address.s_addr == static_cast<std::uint32_t>(element.number)) {
            return fmt::format("{} ({})", element.number, value.text);
        }
    }
    return fmt::format("{}", element.number);
}

std::string element_text(const Element& element, std::span<const rows::Value> values)
{
    std::string value;
    switch (element.kind) {
    case Element::Kind::raw:
        value = vor::hexadecimal(element.bytes);
        break;
    case Element::Kind::text:
        value = element.secret ? std::string(vor::mask) : vor::quoted(element.bytes);
        break;
    default:
        value = number_text(element, values);
    }
    return fmt::format(" | {} {} {}", element.tag, name_of(element.kind), value);
}

// What follows the word "password" within double quotes.
std::string without_passwords(std::string_view text)
{
    static constexpr std::string_view word = "password ";
    std::string masked;
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word)) {
        const bool begins = at > 0 && (text[at - 1] == '"' || text[at - 1] == '^');
        masked += text.substr(0, at + word.size());
        text.remove_prefix(at + word.size());
        const std::size_t end = std::min(text.find('"'), text.size());
        if (begins && end != 0) {
            masked += vor::mask;
            text.remove_prefix(end);
        }
    }
    return masked.append(text);
}

} // namespace

std::string without_secrets(std::string_view text, std::span<const rows::Value> values)
{
    std::string masked = without_passwords(text);
    for (const rows::Value& value : values) {
        for (std::size_t at = 0; value.secret && !value.text.empty();) {
            at = masked.find(value.text, at);
            if (at == std::string::npos) {
                break;
            }
            masked.replace(at, value.text.size(), vor::mask);
            at += vor::mask.size();
        }
    }
    return masked;
}

std::string unfit_text(const Message& message)
{
    if (message.unfit == Unfit::elements) {
        return fmt::format("{} elements, but a message has room for {}", message.elements.size(), message.room);
    }
    std::size_t bytes = 0;
    for (const Element& element : message.elements) {
        bytes += element.bytes.size();
    }
    return fmt::format("{} bytes of text, but a message has room for {}, element headers included", bytes,
                       message.room);
}

std::string described(const Message& message, const rows::Row& row, std::span<const rows::Value> values)
{
    if (message.way == Way::konfd) {
        return fmt::format("konfd | {} bytes | {}", message.counted,
                           vor::printable(without_secrets(message.command, values)));
    }
    std::string text = fmt::format("{} (SAP {}) 0x{:x}{}", manager_name(message.sap), message.sap, message.id,
                                   message.way == Way::one_way ? " one-way" : "");
    if (message.option) {
        text += fmt::format(" | option {}", *message.option);
    }
    if (message.flag) {
        text += fmt::format(" | flag {}", *message.flag);
    }
    for (const Element& element : message.elements) {
        text += element_text(element, values);
    }
    if (!message.record.empty()) {
        text += record_text(message, row, values);
    } else if (message.elements.empty()) {
        text += " | empty";
    }
    return text;
}

} // namespace vorcfg::call
