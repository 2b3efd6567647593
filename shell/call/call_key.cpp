#include "call/call_key.hpp"

#include <algorithm>
#include <tuple>

#include <fmt/core.h>

#include "rows/families.hpp"
#include "rows/reading.hpp"
#include "text/text.hpp"

namespace vorcfg::call {

namespace {

bool is_object_of(const CallKey& key, std::size_t index)
{
    const rows::Argument& argument = key.row->arguments()[index];
    return argument.is_object && (argument.is_list || !key.values[index].empty());
}

bool goes_out(const CallKey& key, const rows::Argument& argument)
{
    if (!argument.is_sent || argument.is_result() || argument.decided_by.empty()) {
        return argument.is_sent && !argument.is_result();
    }
    const auto arguments = key.row->arguments();
    const auto decides = std::ranges::find(arguments, argument.decided_by, &rows::Argument::name);
    return key.values[static_cast<std::size_t>(decides - arguments.begin())] == KeptValues{argument.decided_at.number};
}

KeptValue kept(const rows::Argument& argument, const rows::Value& value)
{
    if (argument.is_number()) {
        return value.number;
    }
    return vor::is_utf8(value.text) ? KeptValue(value.text) : KeptValue(RawText{value.text});
}

rows::Value value_of(const CallKey& key, const rows::Argument& argument, const KeptValue& kept)
{
    rows::Value value;
    const auto* const number = std::get_if<std::int64_t>(&kept);
    if (argument.is_number() != (number != nullptr)) {
        throw input::InputError{
            fmt::format("{} does not take {} {}", key.row->full_name(), argument.name, shown(argument, kept))};
    }
    if (number != nullptr) {
        value.number = *number;
        value.text = argument.kind == rows::Kind::decimal ? std::to_string(*number) : "";
    } else {
        const auto* const bytes = std::get_if<RawText>(&kept);
        value.text = bytes != nullptr ? bytes->text : std::get<std::string>(kept);
    }
    return value;
}

} // namespace

bool CallKey::can_compare_secret(const CallKey& other) const
{
    const std::size_t by = fingerprint.find(':') + 1;
    return row == other.row && by != 0 && other.fingerprint.starts_with(fingerprint.substr(0, by)) &&
           settings_of(*this) == settings_of(other);
}

bool CallKey::operator==(const CallKey& other) const
{
    return std::tie(row, values, secret, unknown) == std::tie(other.row, other.values, other.secret, other.unknown) &&
           (!can_compare_secret(other) || fingerprint == other.fingerprint);
}

CallKey key_of(const PreparedCall& call)
{
    std::vector<KeptValues> values;
    for (const rows::Argument& argument : call.row->arguments()) {
        const std::size_t begin = values.size();
        const std::size_t end = argument.is_list ? call.values.size() : begin + 1;
        KeptValues& sent = values.emplace_back();
        for (std::size_t i = begin; i < end; i++) {
            const rows::Value& value = call.values[i];
            if (value.given && !value.secret) {
                sent.push_back(kept(argument, value));
            }
        }
    }
    return key_of(*call.row, std::move(values), std::ranges::any_of(call.values, &rows::Value::secret));
}

CallKey key_of(const rows::Row& row, std::vector<KeptValues> values, bool secret)
{
    CallKey key{&row, std::move(values), secret};
    for (std::size_t i = 0; i < key.values.size(); i++) { // an older journal may have values that are never sent
        if (!goes_out(key, row.arguments()[i])) {
            key.values[i].clear();
        }
    }
    return key;
}

std::string bytes_of(const KeptValue& value)
{
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        return std::to_string(*number);
    }
    const auto* const bytes = std::get_if<RawText>(&value);
    return bytes != nullptr ? bytes->text : std::get<std::string>(value);
}

PreparedCall prepare(const CallKey& key)
{
    if (!key.unknown.empty()) {
        throw input::InputError{fmt::format("{} has no argument {}", key.row->full_name(), key.unknown.front().first)};
    }
    PreparedCall again{key.row, {}, {}};
    for (std::size_t i = 0; i < key.values.size(); i++) {
        const rows::Argument& argument = key.row->arguments()[i];
        for (const KeptValue& kept : key.values[i]) {
            again.values.push_back(value_of(key, argument, kept));
        }
        if (argument.is_list || !key.values[i].empty()) {
            continue;
        }
        rows::Value& left_out = again.values.emplace_back();
        left_out.given = argument.is_result();
        left_out.text.resize(argument.kind == rows::Kind::untouched ? rows::result_room : 0);
        if (argument.is_sent && !argument.is_result() && !argument.is_optional && argument.decided_by.empty()) {
            throw input::InputError{fmt::format("{} is missing", argument.name)};
        }
    }
    return again;
}

namespace {

// A journal may hold what the call does not take, or lack it.
std::string bytes_of(const KeptValues& values)
{
    return values.empty() ? "" : bytes_of(values.front());
}

KeptValue kept_text(std::string text)
{
    return vor::is_utf8(text) ? KeptValue(std::move(text)) : KeptValue(RawText{std::move(text)});
}

const KeptValues& values_given(const CallKey& key, std::string_view argument)
{
    const auto arguments = key.row->arguments();
    const auto found = std::ranges::find(arguments, argument, &rows::Argument::name);
    return key.values[static_cast<std::size_t>(found - arguments.begin())];
}

// "interface {interface}", with the argument's value.
KeptValue words_filled(const CallKey& key, std::string_view words)
{
    const std::size_t open = std::min(words.find('{'), words.size());
    std::string text(words.substr(0, open));
    if (open < words.size()) {
        text += bytes_of(values_given(key, words.substr(open + 1, words.size() - open - 2)));
    }
    return kept_text(std::move(text));
}

// Whether there is one line with this key under a path, since a call stores it in place of any other.
bool is_only_line(std::string_view line_key)
{
    const auto stores = [&](const rows::Row& row) {
        return std::ranges::any_of(row.lines,
                                   [&](std::string_view line) { return line.substr(line.rfind('/') + 1) == line_key; });
    };
    return std::ranges::any_of(rows::families(),
                               [&](const rows::Family* family) { return std::ranges::any_of(family->rows, stores); });
}

// Where a query stores: its pattern, under its path.
KeptValues queried_line(const CallKey& key)
{
    KeptValues line;
    const KeptValues& path = values_given(key, "path");
    for (std::size_t i = 0; i + 1 < path.size(); i += 2) {
        line.push_back(kept_text(bytes_of(path[i]) + ' ' + bytes_of(path[i + 1])));
    }
    std::string pattern = bytes_of(values_given(key, "pattern_key"));
    const KeptValues& value = values_given(key, "pattern_value");
    if (!value.empty() && !is_only_line(pattern)) {
        pattern += ' ' + bytes_of(value);
    }
    line.push_back(kept_text(std::move(pattern)));
    return line;
}

std::vector<Setting> stored_lines(const CallKey& key)
{
    std::vector<Setting> settings;
    for (std::string_view rest : key.row->lines) {
        KeptValues line;
        for (std::size_t end = 0; end != rest.npos; rest.remove_prefix(std::min(end + 1, rest.size()))) {
            end = rest.find('/');
            line.push_back(words_filled(key, rest.substr(0, end)));
        }
        settings.push_back({key.row->setting_name(), {std::move(line)}});
    }
    if (settings.empty()) {
        settings.push_back({key.row->setting_name(), {queried_line(key)}});
    }
    return settings;
}

} // namespace

std::vector<Setting> settings_of(const CallKey& key)
{
    const rows::Row& row = *key.row;
    if (row.channel == rows::Channel::konfd) {
        return stored_lines(key);
    }
    std::vector<Setting> settings{{row.setting_name(), {}}};
    for (std::size_t i = 0; i < key.values.size(); i++) {
        if (is_object_of(key, i)) {
            settings.front().objects.push_back(key.values[i]);
        }
    }
    std::size_t object = 0;
    for (std::size_t i = 0; i < key.values.size(); i++) {
        if (!is_object_of(key, i)) {
            continue;
        }
        const auto choices = row.arguments()[i].choices;
        const auto every = std::ranges::find_if(choices, &rows::Choice::every);
        if (every != choices.end() && key.values[i] == KeptValues{std::string(every->name)}) {
            for (const rows::Choice& choice : choices) {
                if (!choice.every) {
                    Setting& other = settings.emplace_back(settings.front());
                    other.objects[object] = {std::string(choice.name)};
                }
            }
        }
        object++;
    }
    return settings;
}

bool changes_nothing(const PreparedCall& call)
{
    const rows::Row& row = *call.row;
    if (!row.is_setting()) {
        return true;
    }
    const auto arguments = row.arguments();
    for (std::size_t i = 0; i < arguments.size() && i < call.values.size(); i++) {
        const auto is_idle = [&](const rows::Choice& choice) {
            return choice.idle && (arguments[i].is_number() ? choice.number == call.values[i].number
                                                            : choice.name == call.values[i].text);
        };
        if (call.values[i].given && std::ranges::any_of(arguments[i].choices, is_idle)) {
            return true;
        }
    }
    return false;
}

std::string shown(const rows::Argument& argument, const KeptValue& value, bool hexadecimal)
{
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        if (hexadecimal && *number >= 0) {
            return fmt::format("0x{:x}", *number);
        }
        const auto named = std::ranges::find(argument.choices, *number, &rows::Choice::number);
        return named != argument.choices.end() ? std::string(named->name) : std::to_string(*number);
    }
    if (const auto* const bytes = std::get_if<RawText>(&value)) {
        return fmt::format(R"({{"bytes":"{}"}})", vor::hexadecimal(bytes->text)); // as the journal has it
    }
    const auto& text = std::get<std::string>(value);
    return text.empty() || text.find_first_of(" \t\"#") != std::string::npos ? vor::quoted(text) : vor::escaped(text);
}

std::string shown(const rows::Argument& argument, const KeptValues& values, bool hexadecimal)
{
    if (!argument.is_list) {
        return values.empty() ? "not given" : shown(argument, values.front(), hexadecimal);
    }
    std::string items;
    for (const KeptValue& value : values) {
        items += fmt::format("{}{}", items.empty() ? "" : ", ", shown(argument, value));
    }
    return fmt::format("[{}]", items);
}

std::vector<bool> hexadecimal_of(const PreparedCall& call)
{
    std::vector<bool> hexadecimal;
    for (std::size_t i = 0; i < call.row->arguments().size(); i++) {
        hexadecimal.push_back(i < call.values.size() && call.values[i].hexadecimal);
    }
    return hexadecimal;
}

std::string name_of(const PreparedCall& call)
{
    return name_of(key_of(call), hexadecimal_of(call));
}

std::string name_of(const CallKey& key, const std::vector<bool>& hexadecimal)
{
    std::string name = key.row->full_name();
    for (std::size_t i = 0; i < key.values.size(); i++) {
        for (const KeptValue& value : is_object_of(key, i) ? key.values[i] : KeptValues()) {
            name += ' ' + shown(key.row->arguments()[i], value, i < hexadecimal.size() && hexadecimal[i]);
        }
    }
    return name;
}

} // namespace vorcfg::call
