// reading.hpp: the words of one line, read into the values of a call.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "input/input_error.hpp"
#include "input/secret.hpp"
#include "rows/row.hpp"

namespace vorcfg {

inline constexpr std::size_t result_room = 64; // of one that the call does not write

struct Reading {
    const Row& row;
    std::span<const Word> words; // the whole line: the family's name is 0, the call's 1
    const Place& place;
    Secrets& secrets;
    std::vector<Value> values;
    // Of a line with a secret no complaint repeats a word: who misplaces one puts the secret elsewhere.
    bool hides_words = false;

    static constexpr std::size_t first_word = 2;

    // The value of an argument whose word stands at the index. Throws a InputError that names it.
    Value value(const Argument& argument, std::size_t index);
    // Whether it goes out, as an argument before it decides.
    bool is_sent(const Argument& argument) const;

    std::size_t index_of(std::size_t index) const; // of a word in its line
    [[noreturn]] void complain(std::string text, std::size_t index, std::string_view argument = {}) const;
    std::string shown(std::size_t index) const;        // a word, or what stands for it
    std::string shown_quoted(std::size_t index) const; // the same between double quotes
};

// One word an argument, then the list.
void read_words(Reading& reading);

} // namespace vorcfg
