// options.hpp: the options of a command line, read by a table.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

namespace vor {

struct Option {
    std::string_view name;  // "--journal"
    std::string_view value; // what follows it, if anything does: "FILE"
    std::string_view about;
};

// An option without its value, or with one that it does not take.
struct OptionError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// An option in front, and its value: `--name value` or `--name=value`.
struct OptionWords {
    std::string_view name; // up to an equals sign; -h is --help
    std::optional<std::string_view> value;

    explicit OptionWords(std::string_view word);
    // The value that the option has, the next word where it stands there, which is then added to those `used`. Throws
    // an OptionError.
    std::string_view value_of(const Option& option, std::optional<std::string_view> next, std::size_t& used) const;
};

template <class Row>
struct FoundOption {
    const Row* row;
    std::string_view value;
    std::size_t used; // words, with its own
};

// The option that the words begin with; none where the first is not one of the table's. Throws an OptionError.
template <class Row>
std::optional<FoundOption<Row>> option_in(std::span<const Row> rows, std::span<const std::string_view> words)
{
    const OptionWords typed(words.front());
    for (const Row& row : rows) {
        if (row.name == typed.name) {
            std::size_t used = 1;
            const auto next = words.size() > 1 ? std::optional(words[1]) : std::nullopt;
            const std::string_view value = typed.value_of(row, next, used);
            return FoundOption<Row>{&row, value, used};
        }
    }
    return std::nullopt;
}

} // namespace vor
