#include "call/prepare.hpp"

#include <algorithm>
#include <map>

#include <fmt/core.h>

#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "rows/reading.hpp"
#include "text/nearest.hpp"
#include "text/text.hpp"

namespace vorcfg::call {

namespace {

// A line may leave its secret out where an option or a prompt provides it.
std::vector<input::Word> with_secret(const rows::Row& row, std::span<const input::Word> words,
                                     const input::SecretSources& sources)
{
    std::vector<input::Word> all(words.begin(), words.end());
    if (!sources.left_out) {
        return all;
    }
    std::size_t at = 0;
    std::size_t needed = rows::Reading::first_word;
    for (const rows::Argument& argument : row.arguments()) {
        at = argument.is_secret ? needed : at;
        needed += argument.is_given() && !argument.is_list ? 1 : 0;
    }
    const bool asked_for = sources.left_out->text != "?";
    if (at == 0) {
        if (asked_for) {
            throw input::InputError{"takes no secret argument"};
        }
    } else if (all.size() + 1 == needed && !(at < all.size() && input::is_secret_source(all[at]))) {
        all.insert(all.begin() + static_cast<std::ptrdiff_t>(at), *sources.left_out);
    } else if (asked_for) {
        throw input::InputError{"the secret is given twice, or another argument is missing"};
    }
    return all;
}

// Named arguments come after those without a name; text that only looks like a name is text.
const rows::Argument* named_argument(const rows::Row& row, const input::Word& word, bool after_a_name)
{
    if (word.named == 0) {
        return nullptr;
    }
    const std::string_view name = std::string_view{word.text}.substr(0, word.named);
    std::vector<std::string> known;
    for (const rows::Argument& argument : row.arguments()) {
        if (argument.is_given() && argument.name == name) {
            return &argument;
        }
        if (argument.is_given()) {
            known.emplace_back(argument.name);
        }
    }
    const std::vector<std::string> near = vor::nearest(name, known);
    if (!near.empty() || after_a_name || word.quoted) {
        const bool hidden = std::ranges::any_of(row.arguments(), &rows::Argument::is_secret); // it may be misplaced
        throw input::InputError{.text = fmt::format("no argument \"{}\"{}", hidden ? vor::mask : name,
                                                    vor::suggestion(near, "expected " + vor::alternatives(known))),
                                .word = word.index};
    }
    return nullptr;
}

// The words in the order of their arguments, without names.
std::vector<input::Word> in_order(const rows::Row& row, std::vector<input::Word> words,
                                  const input::SecretSources& sources)
{
    const auto is_named = [&](const input::Word& word) { return named_argument(row, word, false) != nullptr; };
    const auto first = std::find_if(words.begin() + rows::Reading::first_word, words.end(), is_named);
    if (row.read != nullptr || first == words.end()) {
        return with_secret(row, words, sources);
    }
    std::vector<input::Word> all(words.begin(), first);
    std::vector<input::Word> listed;
    std::size_t at = rows::Reading::first_word;
    std::map<std::string_view, input::Word> named;
    for (auto word = first; word != words.end(); ++word) {
        const rows::Argument* const argument = named_argument(row, *word, true);
        if (argument == nullptr) {
            throw input::InputError{.text = "arguments without a name must come before named ones",
                                    .word = word->index};
        }
        input::Word value = *word;
        value.text.erase(0, value.named + 1);
        value.named = 0;
        if (argument->is_list) {
            listed.push_back(std::move(value));
        } else if (!named.emplace(argument->name, std::move(value)).second) {
            throw input::InputError{fmt::format("{} is given twice", argument->name), input::exit_usage,
                                    std::string(argument->name), word->index};
        }
    }
    for (const rows::Argument& argument : row.arguments()) {
        if (!argument.is_given() || argument.is_list) {
            continue;
        }
        const auto value = named.find(argument.name);
        if (at++ < static_cast<std::size_t>(first - words.begin())) {
            if (value != named.end()) {
                throw input::InputError{fmt::format("{} is given twice", argument.name), input::exit_usage,
                                        std::string(argument.name), value->second.index};
            }
        } else if (value != named.end()) {
            all.push_back(std::move(value->second));
        } else if (argument.is_secret && sources.left_out) {
            all.push_back(*sources.left_out);
        } else if (!argument.decided_by.empty()) {
            all.push_back({{}, words.size(), true});
        } else {
            throw input::InputError{fmt::format("needs {}", argument.name), input::exit_usage,
                                    std::string(argument.name), words.size()};
        }
    }
    all.insert(all.end(), listed.begin(), listed.end());
    return all;
}

// A secret elsewhere would be shown.
void check_secrets(const rows::Row* row, std::span<const input::Word> words)
{
    const auto misplaced = std::ranges::find_if(words, &input::Word::secret);
    if (misplaced != words.end() && (row == nullptr || !rows::may_hold_secret(*row, words))) {
        throw input::InputError{.text = "a secret can only be given for a secret argument", .word = misplaced->index};
    }
}

} // namespace

PreparedCall prepare(std::span<const input::Word> line, input::Secrets& secrets, const input::Place& place)
{
    std::vector<input::Word> words(line.begin(), line.end());
    for (std::size_t i = 0; i < words.size(); i++) {
        words[i].index = i;
    }
    check_secrets(nullptr, std::span(words).first(std::min(words.size(), rows::Reading::first_word)));
    const rows::Expected expected = place.file.empty() ? rows::Expected::command_or_family : rows::Expected::family;
    const rows::Family& family = rows::require_family(words[0].text, expected);
    if (words.size() == 1) {
        throw input::InputError{.text = fmt::format("{} needs a call", family.name),
                                .hint = fmt::format("vorcfg help {} lists its calls", family.name)};
    }
    const rows::Row& row = rows::require_row(words[0].text, words[1].text);
    try {
        if (row.make == nullptr) {
            throw input::InputError{.text = fmt::format("cannot be made on its own; used by {}", row.used_by),
                                    .word = 1};
        }
        check_secrets(&row, words);
        const std::vector<input::Word> all = in_order(row, std::move(words), secrets.sources());
        rows::Reading reading{row, all, place, secrets, {}};
        (row.read != nullptr ? row.read : rows::read_words)(reading);
        return {&row, std::move(reading.values), place};
    } catch (input::InputError& error) {
        error.call = row.full_name();
        throw;
    }
}

PreparedCall prepare_example(const rows::Row& row)
{
    std::vector<input::Word> words = input::words_of(rows::example_call(row));
    for (input::Word& word : words) {
        if (!word.quoted && word.text == "-") {
            word = {{std::string(sample_secret), true}};
        }
    }
    input::Secrets secrets({.literals = true});
    return prepare(words, secrets);
}

} // namespace vorcfg::call
