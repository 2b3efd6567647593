// words.hpp: what was typed, word by word.
#pragma once

#include <cstddef>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "input/input_error.hpp"
#include "text/parse.hpp"

namespace vorcfg {

// Exposed is what holds a value from the command line.
struct Word : vor::Word {
    std::size_t index = 0; // among the words of its line
    bool left_out = false; // stands where none was typed
};

// What a file of lines may hold; more is told apart from one that never ends.
struct Bounds {
    std::size_t file = std::size_t{64} << 20;
    std::size_t line = std::size_t{64} << 10;
};

// All that a just opened file holds; closes it. Throws a InputError that says of which name it could not be opened or
// read, or where it is too long.
std::string content_of(std::FILE* file, const std::string& name, const Bounds& bounds = {});

// What ${name} stands for in a batch file.
class Variables {
public:
    void set(std::string_view definition); // "name=value", which wins over a file's
    void read(const std::string& path);    // one name=value a line, the value a word as in a batch

    // Appends to the word what ${name} or $${ in front of the text stands for, and says how many bytes that was.
    // Throws a InputError with the column.
    std::size_t expand(std::string_view left, std::size_t column, vor::Word& word);

    // What no line has used, each as a complaint.
    std::vector<InputError> unused(const std::string& batch) const;

private:
    struct Variable {
        std::string value;
        bool on_command_line = false; // where others can read it: no secret
        Place place;                  // in the file it comes from
        bool used = false;
    };
    std::map<std::string, Variable, std::less<>> known_;
};

// The words of one line; ${name} is what the variable holds, without a second
// look at it, and $${ is ${. Throws a InputError with the column.
std::vector<Word> words_of(std::string_view line, Variables* variables = nullptr);

} // namespace vorcfg
