// words.hpp: what was typed, word by word.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "input/complaint.hpp"
#include "text/parse.hpp"

namespace vorcfg {

// Exposed is what holds a value from the command line.
struct Word : vor::Word {
    std::size_t index = 0; // among the words of its line
    bool left_out = false; // stands where none was typed
};

// What ${name} stands for in a batch file.
class Variables {
public:
    void set(std::string_view definition); // "name=value", which wins over a file's
    void read(const std::string& path);    // one name=value a line, the value a word as in a batch

    // Appends to the word what ${name} or $${ in front of the text stands for, and says how many bytes that was.
    // Throws a Complaint with the column.
    std::size_t expand(std::string_view left, std::size_t column, vor::Word& word);

    // What no line has used, each as a complaint.
    std::vector<Complaint> unused(const std::string& batch) const;

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
// look at it, and $${ is ${. Throws a Complaint with the column.
std::vector<Word> words_of(std::string_view line, Variables* variables = nullptr);

} // namespace vorcfg
