#include "rows/reading.hpp"

#include <algorithm>
#include <arpa/inet.h>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "rows/contract.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorcfg::rows {

std::string Reading::shown(std::size_t index) const
{
    return hides_words ? std::string(vor::mask) : words[index].text;
}

std::string Reading::shown_quoted(std::size_t index) const
{
    return hides_words ? std::string(vor::mask) : vor::quoted(words[index].text);
}

[[noreturn]] void Reading::fail(std::string text, std::size_t index, std::string_view argument) const
{
    throw input::InputError{std::move(text), input::exit_usage, std::string(argument), index_of(index)};
}

std::size_t Reading::index_of(std::size_t index) const
{
    return index < words.size() ? words[index].index : words.size();
}

namespace {

std::string read_secret(const Reading& reading, const Argument& argument, std::size_t index)
try {
    const input::Place& place = reading.place;
    const std::string name = // as a prompt shows it
        fmt::format("{}{}: {}", place.file.empty() ? "" : fmt::format("{}:{}: ", place.file, place.line),
                    reading.row.full_name(), argument.name);
    return reading.secrets.read(reading.words[index], name, place.line);
} catch (input::InputError& error) {
    error.text = fmt::format("{}: {}", argument.name, error.text);
    error.argument = argument.name;
    error.word = reading.index_of(index);
    throw;
}

const Choice* choice_named(const Argument& argument, std::string_view name)
{
    const auto found = std::ranges::find(argument.choices, name, &Choice::name);
    return found != argument.choices.end() ? &*found : nullptr;
}

std::int64_t read_number(const Reading& reading, const Argument& argument, std::size_t index)
{
    const std::string& text = reading.words[index].text;
    if (const Choice* const choice = choice_named(argument, text)) {
        return choice->number;
    }
    const auto integer = vor::integer_in(text);
    if (!integer) {
        reading.fail(fmt::format("{}: {} is not a number; expected {}", argument.name, reading.shown_quoted(index),
                                 accepted(argument)),
                     index, argument.name);
    }
    const std::int64_t number = integer->bounded();
    if (!argument.range.holds(number)) {
        reading.fail(fmt::format("{} must be {}, not {}", argument.name, accepted(argument), reading.shown(index)),
                     index, argument.name);
    }
    return number;
}

void check_text(const Reading& reading, const Argument& argument, const std::string& text, std::size_t index)
{
    const auto fail = [&](std::string_view rule) {
        reading.fail(fmt::format("{} must {}", argument.name, rule), index, argument.name);
    };
    if (!argument.choices.empty() && choice_named(argument, text) == nullptr) {
        fail(fmt::format("be {}, not {}", accepted(argument), reading.shown_quoted(index)));
    }
    if (argument.kind == Kind::ipv4) {
        in_addr address;
        if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
            fail(fmt::format("be an IPv4 address such as 192.168.1.10, not {}", reading.shown_quoted(index)));
        }
    }
    if (argument.most_bytes != 0 && text.size() > argument.most_bytes) {
        fail(fmt::format("be at most {} bytes long, not {}", argument.most_bytes, text.size()));
    }
    if (reading.row.channel == Channel::konfd) {
        if (text.find('"') != std::string::npos) {
            fail("not contain a double quote: konfd has no way to escape it");
        }
        if (std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) < ' '; })) {
            fail("not contain a control character: it would end the command early");
        }
    }
}

} // namespace

Value Reading::value(const Argument& argument, std::size_t index)
{
    Value value{.secret = argument.is_secret, .word = index_of(index)};
    if (words[index].secret && !argument.is_secret) {
        fail(fmt::format("{} is not a secret argument, but is given a secret", argument.name), index, argument.name);
    }
    if (argument.is_number()) {
        value.number = read_number(*this, argument, index);
        value.hexadecimal = words[index].text.starts_with("0x") || words[index].text.starts_with("0X");
        value.text = argument.kind == Kind::decimal ? std::to_string(value.number) : "";
        return value;
    }
    value.awaited = argument.is_secret && secrets.waits(words[index]);
    value.text = argument.is_secret ? read_secret(*this, argument, index) : words[index].text;
    check_text(*this, argument, value.text, index);
    return value;
}

bool Reading::is_sent(const Argument& argument) const
{
    const auto decides = [&](const Argument& other) { return other.name == argument.decided_by; };
    const auto other = std::ranges::find_if(row.arguments(), decides);
    return other == row.arguments().end() ||
           values[static_cast<std::size_t>(other - row.arguments().begin())].number == argument.decided_at.number;
}

namespace {

// Of an argument that is not sent; a secret that would be prompted for is left out.
Value unsent_value(const Reading& reading, const Argument& argument, std::size_t index)
{
    const input::Word& word = reading.words[index];
    const std::string_view nothing = argument.is_number() ? "0" : "";
    if (word.text != nothing && !word.left_out && !(argument.is_secret && word.text == "?")) {
        reading.fail(fmt::format("{} must be {} unless {} is {}", argument.name, argument.is_number() ? "0" : "\"\"",
                                 argument.decided_by, argument.decided_at.name),
                     index, argument.name);
    }
    return {.given = false};
}

} // namespace

bool may_hold_secret(const Row& row, std::span<const input::Word> words)
{
    const auto names_one = [](const input::Word& word) { return word.text.find("password") != std::string::npos; };
    return row.read != nullptr ? std::ranges::any_of(words, names_one)
                               : std::ranges::any_of(row.arguments(), &Argument::is_secret);
}

void read_words(Reading& reading)
{
    const auto arguments = reading.row.arguments();
    reading.hides_words = std::ranges::any_of(arguments, &Argument::is_secret);
    std::size_t next = Reading::first_word;
    Value* count = nullptr;
    reading.values.reserve(arguments.size());
    for (const Argument& argument : arguments) {
        if (argument.is_list) {
            break;
        }
        if (!argument.is_given()) {
            Value& value = reading.values.emplace_back();
            value.text.resize(argument.kind == Kind::untouched ? result_room : 0);
            count = argument.is_count ? &value : count;
        } else if (next >= reading.words.size() || (reading.words[next].left_out && reading.is_sent(argument))) {
            reading.fail(fmt::format("needs {}", argument.name), next, argument.name);
        } else {
            reading.values.push_back(reading.is_sent(argument) ? reading.value(argument, next)
                                                               : unsent_value(reading, argument, next));
            next++;
        }
    }
    const std::size_t listed = reading.words.size() - next;
    const std::size_t most = arguments.empty() ? 0 : arguments.back().most_listed;
    if (listed > most) {
        if (most == 0) {
            reading.fail(fmt::format("unexpected argument {}", reading.shown_quoted(next)), next);
        }
        const std::string_view name = arguments.back().name;
        reading.fail(fmt::format("{} takes at most {} values, not {}", name, most, listed), next + most, name);
    }
    if (count != nullptr) {
        count->number = static_cast<std::int64_t>(listed);
    }
    for (; next < reading.words.size(); next++) {
        reading.values.push_back(reading.value(arguments.back(), next));
    }
}

} // namespace vorcfg::rows
