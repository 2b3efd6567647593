// words.hpp: the words of a line, and the variables in them.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "input/input_error.hpp"
#include "text/parse.hpp"

namespace vorcfg::input {

// Exposed: it contains a value from the command line. Secret: only a secret argument takes it, as it is.
struct Word : vor::Word {
    std::size_t index = 0;       // among the words of its line
    bool left_out = false;       // in place of one that was not typed
    const Place* from = nullptr; // of a variable in it, in the variable's file
};

// The whole content of the file, or of standard input. Throws an InputError with the name.
std::string content_of(const std::string& path);
std::string content_of_standard_input();

// The variables of a file of calls, written ${name}.
class Variables {
public:
    struct Variable {
        std::string value;
        bool exposed = false; // on the command line, where others can read it: not for secrets
        bool secret = false;  // the value is one itself, and does not say where it comes from
        Place place{};        // in its file
        bool needed = false;
        bool used = false;
    };

    // "name=value", which overrides a file's: all of them come first.
    void set(std::string_view definition);
    // One name=value per line, the value a word as in a file of calls; - is standard input. `needed`: each must be
    // used.
    void read(const std::string& path, bool needed = true);
    void add(const std::string& name, Variable variable); // of a file

    // Replaces ${name} or $${ at the beginning of the text: appends the value to the word, notes its place and returns
    // how many bytes were read. Throws an InputError with the column.
    std::size_t expand(std::string_view left, std::size_t column, vor::Word& word, const Place*& from);

    bool are_used() const; // any of them
    // An error for each that is needed and no line used.
    std::vector<InputError> unused(const std::string& batch) const;

private:
    std::map<std::string, Variable, std::less<>> known_;
};

// The column of a byte of the line, in characters; both from 1 on. A byte order mark does not count.
std::size_t column_in(std::string_view line, std::size_t byte_column);

// The words of one line. ${name} becomes the variable's value, which is not expanded again, and $${ becomes ${. Throws
// an InputError with the column, in bytes.
std::vector<Word> words_of(std::string_view line, Variables* variables = nullptr);

// The first word of the line that names the gateway which a file is for; it is no family.
inline constexpr std::string_view gateway_word = "gateway";

// What may help with a line that was refused: it has $name or 'text', as a shell would take them. Else empty.
std::string hint_about(const std::vector<Word>& words);

} // namespace vorcfg::input
