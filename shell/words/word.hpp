// word.hpp: what was typed, word by word.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

struct Word {
    std::string text;
    bool quoted = false;
    std::size_t column = 0; // in its line of a batch; 0 on the command line
};

// The words of one line. `"` opens a text in which \" and \\ stand for the
// character; # begins a comment. Throws a Complaint with the column.
std::vector<Word> words_of(std::string_view line);

} // namespace vorcfg
