#include "plan.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <limits>

#include "complaint.hpp"
#include "konfd_query.hpp"

namespace vorcfg {

static constexpr std::size_t output_room = 64;

std::vector<Argument> arguments_of(const Row& row)
{
    std::vector<Argument> arguments;
    std::string_view rest = row.arguments;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        Argument argument{rest.substr(0, end)};
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (arguments.size() < row.types.size()) {
            argument.type = row.types[arguments.size()];
        }
        argument.list = argument.name.ends_with("...");
        argument.name.remove_suffix(argument.list ? 3 : 0);
        const char mark = argument.name.back();
        argument.secret = mark == '*';
        argument.unsent = mark == '-';
        argument.output = mark == '>';
        argument.counted = mark == '#';
        argument.address = mark == '@';
        argument.name.remove_suffix(std::string_view("*->#@").find(mark) != std::string_view::npos ? 1 : 0);
        if (const std::size_t colon = argument.name.find(':'); colon != std::string_view::npos) {
            argument.bits = unsigned(*number_of(argument.name.substr(colon + 1)));
            argument.name = argument.name.substr(0, colon);
        }
        arguments.push_back(argument);
    }
    return arguments;
}

template <class T>
static constexpr Range range_between()
{
    return {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
}

Range range_of(const Argument& argument)
{
    if (argument.bits != 0) {
        return {0, (std::int64_t(1) << argument.bits) - 1};
    }
    switch (argument.type) {
    case Type::uint8:
        return range_between<std::uint8_t>();
    case Type::byte: // a char, whose sign is the processor's
        return {std::numeric_limits<std::int8_t>::min(), std::numeric_limits<std::uint8_t>::max()};
    case Type::int16:
        return range_between<std::int16_t>();
    case Type::uint16:
        return range_between<std::uint16_t>();
    case Type::int32:
        return range_between<std::int32_t>();
    default:
        return range_between<std::uint32_t>();
    }
}

std::string_view kind_of(const Argument& argument)
{
    static constexpr std::string_view names[] = {
        "8-bit unsigned", "one byte",        "16-bit signed", "16-bit unsigned",
        "32-bit signed",  "32-bit unsigned", "text",          "result"};
    return argument.list ? "list" : argument.address ? "IPv4 address" : names[std::size_t(argument.type)];
}

std::optional<std::int64_t> number_of(std::string_view text)
{
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hexadecimal ? 2 : 0);
    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, hexadecimal ? 16 : 10);
    if (text.empty() || end != text.data() + text.size() || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    // Far out of every argument's range is as good as exact.
    const auto bounded = std::int64_t(std::min<std::uint64_t>(error == std::errc() ? magnitude : UINT64_MAX,
                                                              std::numeric_limits<std::int64_t>::max()));
    return negative ? -bounded : bounded;
}

static std::string range_text(Range range)
{
    return std::to_string(range.least) + " to " + std::to_string(range.most);
}

static Value number(const Argument& argument, const std::string& text, std::size_t token)
{
    const Range range = range_of(argument);
    const auto given = number_of(text);
    if (!given) {
        throw Complaint(std::string(argument.name) + ": \"" + text + "\" is no number; a number from " +
                            range_text(range) + " is wanted, decimal or 0x",
                        exit_usage, token);
    }
    if (*given < range.least || *given > range.most) {
        throw Complaint(std::string(argument.name) + ": " + text + " is out of range, " + range_text(range) +
                            " is accepted",
                        exit_usage, token);
    }
    return {*given, {}, false};
}

static void check_address(const Argument& argument, const std::string& text, std::size_t token)
{
    in_addr address;
    if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
        throw Complaint(std::string(argument.name) + ": \"" + text + "\" is no IPv4 address such as 192.168.1.10",
                        exit_usage, token);
    }
}

void check_konfd_text(std::string_view name, std::string_view text, std::size_t token)
{
    if (text.find('"') != std::string_view::npos) {
        throw Complaint(std::string(name) + ": a double quote would break the command's quoting; konfd has no way to "
                                            "escape it",
                        exit_usage, token);
    }
    if (std::any_of(text.begin(), text.end(), [](char c) { return std::uint8_t(c) < ' '; })) {
        throw Complaint(std::string(name) + ": a control character would end the command early", exit_usage, token);
    }
}

static Value value(const Row& row, const Argument& argument, const Token& token, std::size_t index,
                   const SecretSources& sources)
{
    if (argument.type != Type::text) {
        return number(argument, token.text, index);
    }
    if (argument.bits != 0) {
        return {0, std::to_string(number(argument, token.text, index).number), false};
    }
    if (argument.address) {
        check_address(argument, token.text, index);
    }
    Value given;
    given.secret = argument.secret;
    try {
        given.text = argument.secret ? secret(token, argument.name, sources) : token.text;
    } catch (Complaint& complaint) {
        complaint.token = index;
        throw;
    }
    if (row.channel == Channel::konfd) {
        check_konfd_text(argument.name, given.text, index);
    }
    return given;
}

static std::string wanted_text(const std::vector<Argument>& arguments)
{
    std::string text;
    for (const Argument& argument : arguments) {
        if (argument.output || argument.counted) {
            continue;
        }
        text += ' ';
        text += argument.list ? "[" + std::string(argument.name) + "...]" : std::string(argument.name);
    }
    return text.empty() ? "no argument" : text.substr(1);
}

Planned plan(const Row& row, std::span<const Token> tokens, const SecretSources& sources)
{
    if (is_query(row)) {
        return plan_query(row, tokens, sources);
    }
    Planned planned{&row, arguments_of(row), {}, {}};
    std::size_t next = 0;
    for (const Argument& argument : planned.arguments) {
        if (argument.list) {
            break;
        }
        if (argument.output || argument.counted) {
            planned.values.push_back({0, std::string(argument.output ? output_room : 0, '\0'), false});
        } else if (next == tokens.size()) {
            throw Complaint(std::string(argument.name) + " is missing; wanted: " + wanted_text(planned.arguments),
                            exit_usage, next);
        } else {
            planned.values.push_back(value(row, argument, tokens[next], next, sources));
            next++;
        }
    }
    const std::size_t listed = tokens.size() - next;
    if (listed > row.list_limit) {
        throw Complaint((row.list_limit != 0 ? "more than " + std::to_string(row.list_limit) + " in the list"
                                             : "one argument too many: \"" + tokens[next].text + '"') +
                            "; wanted: " + wanted_text(planned.arguments),
                        exit_usage, next + row.list_limit);
    }
    for (std::size_t i = 0; i < planned.arguments.size(); i++) {
        if (planned.arguments[i].counted) {
            planned.values[i].number = std::int64_t(listed);
        }
    }
    for (; next < tokens.size(); next++) {
        planned.values.push_back(value(row, planned.arguments.back(), tokens[next], next, sources));
    }
    return planned;
}

} // namespace vorcfg
