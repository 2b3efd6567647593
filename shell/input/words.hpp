// word.hpp: what was typed, word by word.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

class Variables;

inline constexpr std::string_view byte_order_mark = "\xef\xbb\xbf"; // some editors begin a file with it

// How many bytes of the text are a name: letters, digits and _, no digit first.
std::size_t name_length(std::string_view text);
// The same of name=, else 0.
std::size_t named_length(std::string_view text);

struct Word {
    std::string text;
    bool quoted = false;
    std::size_t column = 0; // in its line of a batch; 0 on the command line
    std::size_t named = 0;  // the length of the name, where name= stands in front
    bool readable = false;  // holds what stands on the command line
    std::size_t index = 0;  // among the words of its line
    bool left_out = false;  // stands where none was typed
};

// The words of one line. `"` opens a text in which \" and \\ stand for the
// character; # begins a comment; ${name} is what the variable holds, without a
// second look at it, and $${ is ${. Throws a Complaint with the column.
std::vector<Word> words_of(std::string_view line, Variables* variables = nullptr);

} // namespace vorcfg
