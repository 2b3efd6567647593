// options.hpp: command-line options, read by means of a table.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "text/screen.hpp"

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

// An option or argument that does not exist.
struct UnknownArgument : OptionError {
    using OptionError::OptionError;
};

// The values of --color, in the order of ColorWhen.
inline constexpr std::string_view color_words[] = {"auto", "always", "never"};
// Throws an OptionError.
ColorWhen color_when(std::string_view word);

// An option in front, and its value: `--name value` or `--name=value`.
struct OptionWords {
    std::string_view name; // up to an equals sign; -h is --help
    std::optional<std::string_view> value;

    explicit OptionWords(std::string_view word);
    // The option's value; where it is the next word (null: none is left), that one is counted as used. Throws an
    // OptionError.
    std::string_view value_of(const Option& option, const std::string* next, std::size_t& used) const;
};

// An option, and how it is read into something.
template <class Into>
struct OptionOf : Option {
    void (*take)(Into& into, std::string_view value);
};

// That it is there, or its value.
template <auto Member>
inline constexpr auto taken_as = [](auto& into, std::string_view value) {
    auto& member = into.*Member;
    if constexpr (std::is_same_v<decltype(member), bool&>) {
        member = true;
    } else {
        member = value;
    }
};

// The words of a command, from left to right.
class Operands {
public:
    explicit Operands(std::vector<std::string> words) : words_(std::move(words)) {}

    bool empty() const { return at_ == words_.size(); }
    const std::string& front() const { return words_[at_]; }
    std::string take() { return words_[at_++]; }
    // An operand, not an option. Throws an OptionError when nothing of that kind is there.
    std::string take(std::string_view what);
    // Reads the option in front, where it is one of the table's. Throws an OptionError.
    template <class Into, std::size_t Size>
    bool take_option(const OptionOf<Into> (&rows)[Size], Into& into)
    {
        const OptionWords typed(empty() ? std::string_view() : std::string_view(front()));
        const auto* const row = std::ranges::find(rows, typed.name, &Option::name);
        if (row == std::end(rows)) {
            return false;
        }
        std::size_t used = at_ + 1;
        row->take(into, typed.value_of(*row, used < words_.size() ? &words_[used] : nullptr, used));
        at_ = used;
        return true;
    }
    // Throws an OptionError where there is more.
    void end() const;
    // Throws the UnknownArgument in front.
    [[noreturn]] void refuse() const;

private:
    std::vector<std::string> words_;
    std::size_t at_ = 0;
};

} // namespace vor
