// words.hpp: what was typed, word by word.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "text/parse.hpp"

namespace vorcfg {

class Variables;

// Exposed is what holds a value from the command line.
struct Word : vor::Word {
    std::size_t index = 0; // among the words of its line
    bool left_out = false; // stands where none was typed
};

// The words of one line; ${name} is what the variable holds, without a second
// look at it, and $${ is ${. Throws a Complaint with the column.
std::vector<Word> words_of(std::string_view line, Variables* variables = nullptr);

} // namespace vorcfg
