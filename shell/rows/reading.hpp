// reading.hpp: reads the words of one line into the values of a call.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "input/input_error.hpp"
#include "input/secret.hpp"
#include "rows/row.hpp"

namespace vorcfg::rows {

inline constexpr std::size_t result_room = 64; // of one that the call does not write

struct Reading {
    const Row& row;
    std::span<const input::Word> words; // the whole line: the family's name is 0, the call's 1
    const input::Place& place;
    input::Secrets& secrets;
    std::vector<Value> values;
    // No error repeats a word of a line with a secret: a misplaced word may be the secret.
    bool hides_words = false;

    static constexpr std::size_t first_word = 2;

    // The value of an argument, from the word at the index. Throws an InputError that names it.
    Value value(const Argument& argument, std::size_t index);
    // Whether it is sent; an earlier argument may decide.
    bool is_sent(const Argument& argument) const;

    std::size_t index_of(std::size_t index) const; // of a word in its line
    [[noreturn]] void fail(std::string text, std::size_t index, std::string_view argument = {}) const;
    std::string shown(std::size_t index) const;        // a word, or the mask
    std::string shown_quoted(std::size_t index) const; // the same in double quotes
};

// One word per argument, then the list.
void read_words(Reading& reading);

// Whether a secret may be among the words of a line. A call that reads its own words names it by a key.
bool may_hold_secret(const Row& row, std::span<const input::Word> words);

} // namespace vorcfg::rows
