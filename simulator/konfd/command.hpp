// command.hpp: the commands that konfd reads.
//
// [-d] [-s|-c|-u] [-l "line"] [-r "pattern"] [-p priority] ["path word"]...
//
// A burst may hold several commands: an operation after any other option begins the next.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vorsim::konfd {

struct Command {
    char operation = 0; // 's', 'c', 'u', or 0: show alone
    bool show = false;
    std::optional<std::string> line;
    std::optional<std::string> pattern;
    std::optional<int> priority;
    std::vector<std::string> path;
};

constexpr bool is_blank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

struct SyntaxError {
    std::string text;
    bool incomplete = false; // more text could still make it valid
};

// The commands in order, or the first error. A blank text holds none.
std::variant<std::vector<Command>, SyntaxError> parse(std::string_view burst);

// The command as text, secrets masked unless they are to be shown.
std::string text_of(const Command& command, bool show_secrets);

// Where a word such as "password" begins, in either case; npos: there is none.
std::size_t secret_word_in(std::string_view text);
// "password ********" for a line, a pattern or a path word that names a secret.
std::string without_secret(std::string_view line);

} // namespace vorsim::konfd
