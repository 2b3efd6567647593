// parse.hpp: numbers, times and words as both tools read them.
#pragma once

#include <chrono>
#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vor {

// A whole number, decimal or hexadecimal after 0x.
struct Integer {
    bool negative = false;
    std::uint64_t magnitude = 0; // the maximum where it has more than 64 bits
    bool exact = true;

    // The nearest representable: a number far out of range need not be exact.
    std::int64_t bounded() const;
};
std::optional<Integer> integer_in(std::string_view text);

// None where the text is not a number, or not one of this type.
template <std::integral Number>
std::optional<Number> number_in(std::string_view text)
{
    const auto integer = integer_in(text);
    if (!integer || !integer->exact) {
        return std::nullopt;
    }
    if (!integer->negative) {
        return std::in_range<Number>(integer->magnitude) ? std::optional(static_cast<Number>(integer->magnitude))
                                                         : std::nullopt;
    }
    const std::int64_t number = integer->bounded();
    const bool fits = std::is_signed_v<Number> && std::in_range<Number>(number) && integer->magnitude <= 1ULL << 63U;
    return fits ? std::optional(static_cast<Number>(number)) : std::nullopt;
}

// "500ms", "10s", "2m" or "2min", "1h", and "10" where bare seconds are taken; a day at most.
enum class Bare : bool { refused, seconds };
std::optional<std::chrono::milliseconds> time_in(std::string_view text, Bare bare = Bare::refused);

inline constexpr std::string_view byte_order_mark = "\xef\xbb\xbf"; // some editors begin a file with it
constexpr std::string_view without_mark(std::string_view text)
{
    return text.substr(text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0);
}

// How many bytes of the text are a name: letters, digits and _, no digit first.
std::size_t name_length(std::string_view text);
// The same of name=, else 0.
std::size_t named_length(std::string_view text);

// Without their ends.
std::vector<std::string_view> lines_in(std::string_view text);

struct Word {
    std::string text{};
    bool quoted = false;
    std::size_t column = 0; // in its line, from 1 on; 0 where it was no part of one
    std::size_t end = 0;    // the column after it
    std::size_t named = 0;  // the length of the name, where name= stands in front
    bool exposed = false;   // an expansion's to say: others could read a part of it
    bool secret = false;    // likewise: a part of it is a secret
};

struct WordError : std::runtime_error {
    WordError(std::string text, std::size_t at_column) : std::runtime_error(std::move(text)), column(at_column) {}
    std::size_t column;
};

// How a line is split into words, besides at blanks.
struct WordRules {
    std::string_view ends{}; // the characters that end a word; each but " and # is then a word of its own
    // Appends the expansion of the text ahead; returns how many bytes it replaced, 0 for none.
    std::function<std::size_t(std::string_view left, std::size_t column, Word& word)> expand{};
};

// `"` opens a text in which \" and \\ stand for the character; # begins a comment. Throws a WordError.
std::vector<Word> words_in(std::string_view line, const WordRules& rules = {});

// The word as it is typed: between double quotes where it must be.
std::string typed(std::string_view word);

} // namespace vor
