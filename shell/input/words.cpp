#include "input/words.hpp"

#include <algorithm>
#include <cstdio>

#include <fmt/core.h>

#include "text/file.hpp"
#include "text/nearest.hpp"
#include "text/text.hpp"

namespace vorcfg::input {

namespace {

[[noreturn]] void fail(const std::string& name, const vor::FileError& error)
{
    throw InputError{fmt::format("cannot read {}: {}", name, error.what()), exit_no_input};
}

} // namespace

std::string content_of(const std::string& path)
try {
    return vor::content_of(path);
} catch (const vor::FileError& error) {
    fail(path, error);
}

std::string content_of_standard_input()
try {
    return vor::content_of(stdin);
} catch (const vor::FileError& error) {
    fail("standard input", error);
}

std::size_t column_in(std::string_view line, std::size_t byte_column)
{
    return vor::characters_in(vor::without_mark(line).substr(0, byte_column - 1)) + 1;
}

void Variables::set(std::string_view definition)
{
    const std::size_t length = vor::named_length(definition);
    if (length == 0) {
        throw InputError{fmt::format("--set must be NAME=VALUE, not {}", vor::quoted(definition))};
    }
    const std::string name(definition.substr(0, length));
    if (known_.contains(name)) {
        throw InputError{fmt::format("variable \"{}\" is given twice", name)};
    }
    known_[name] = {.value = std::string(definition.substr(length + 1)), .exposed = true, .needed = true};
}

void Variables::add(const std::string& name, Variable variable)
{
    const auto [known, is_new] = known_.try_emplace(name, variable);
    if (!is_new && !known->second.place.file.empty()) {
        throw InputError{.text = fmt::format("variable \"{}\" is given twice", name),
                         .place = std::move(variable.place)};
    }
}

void Variables::read(const std::string& path, bool needed)
{
    const bool from_file = path != "-";
    const std::string source = from_file ? path : "standard input";
    const std::string text = from_file ? content_of(path) : content_of_standard_input();
    std::size_t number = 0;
    for (const std::string_view line : vor::lines_in(vor::without_mark(text))) {
        number++;
        const std::size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string_view::npos || line[first] == '#') {
            continue;
        }
        const auto fail = [&](std::string why, std::size_t at) {
            throw InputError{.text = std::move(why), .place = {source, number, column_in(line, at + 1)}};
        };
        const std::size_t length = vor::named_length(line.substr(first));
        const std::size_t equals = first + length;
        if (length == 0) {
            fail("expected NAME=VALUE", first);
        }
        std::vector<Word> words;
        try {
            words = words_of(line.substr(equals + 1));
        } catch (const InputError& error) {
            fail(error.text, equals + error.place.column);
        }
        if (words.size() > 1) {
            fail("unexpected word; put a value with spaces in double quotes", equals + words[1].column);
        }
        add(std::string(line.substr(first, length)), {.value = words.empty() ? "" : words[0].text,
                                                      .place = {source, number, column_in(line, first + 1)},
                                                      .needed = needed});
    }
}

namespace {

[[noreturn]] void fail(std::string text, std::size_t column, std::string hint = {})
{
    throw InputError{.text = std::move(text), .place = {.column = column}, .hint = std::move(hint)};
}

} // namespace

std::size_t Variables::expand(std::string_view left, std::size_t column, vor::Word& word, const Place*& from)
{
    constexpr std::string_view begins = "${";
    if (left.starts_with("$${")) {
        word.text += begins;
        return begins.size() + 1;
    }
    if (!left.starts_with(begins)) {
        return 0;
    }
    left.remove_prefix(begins.size());
    const std::size_t length = vor::name_length(left);
    if (length == 0 || !left.substr(length).starts_with('}')) {
        fail("expected ${NAME}; write $${ for a literal ${", column);
    }
    const std::string_view name = left.substr(0, length);
    const auto known = known_.find(name);
    if (known == known_.end()) {
        std::vector<std::string> names;
        for (const auto& [each, variable] : known_) {
            names.push_back(each);
        }
        const std::vector<std::string> near = vor::nearest(name, names);
        fail(fmt::format("no variable \"{}\"{}", name, vor::suggestion(near)), column,
             near.empty() ? fmt::format("set it with --set {}=VALUE or --vars FILE", name) : "");
    }
    Variable& variable = known->second;
    variable.used = true;
    word.text += variable.value;
    word.exposed = word.exposed || variable.exposed;
    word.secret = word.secret || variable.secret;
    word.quoted = word.quoted || variable.secret;
    from = variable.place.file.empty() ? from : &variable.place;
    return begins.size() + length + 1;
}

std::vector<Word> words_of(std::string_view line, Variables* variables)
try {
    vor::WordRules rules;
    std::map<std::size_t, const Place*> sources; // by the word's column
    if (variables != nullptr) {
        rules.expand = [&](std::string_view left, std::size_t column, vor::Word& word) {
            return variables->expand(left, column, word, sources[word.column]);
        };
    }
    std::vector<Word> words;
    for (vor::Word& word : vor::words_in(line, rules)) {
        const Place* const from = sources[word.column];
        words.push_back({std::move(word), words.size(), false, from});
    }
    return words;
} catch (const vor::WordError& error) {
    fail(error.what(), error.column);
}

bool Variables::are_used() const
{
    return std::ranges::any_of(known_, [](const auto& known) { return known.second.used; });
}

std::vector<InputError> Variables::unused(const std::string& batch) const
{
    std::vector<InputError> errors;
    for (const auto& [name, variable] : known_) {
        if (variable.needed && !variable.used) {
            errors.push_back(
                {.text = fmt::format("variable \"{}\" is not used in {}", name, batch), .place = variable.place});
        }
    }
    return errors;
}

std::string hint_about(const std::vector<Word>& words)
{
    for (const Word& word : words) {
        const std::string_view text = word.text;
        if (!word.quoted && text.starts_with('$') && vor::name_length(text.substr(1)) != 0) {
            return "a variable is written ${NAME}";
        }
        if (!word.quoted && text.starts_with('\'')) {
            return "text with spaces is put in double quotes";
        }
    }
    return {};
}

} // namespace vorcfg::input
