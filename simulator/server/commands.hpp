// commands.hpp: the commands of a running gateway: one table, one parser.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "server/command.hpp"
#include "text/parse.hpp"

namespace vorsim::server {

struct CommandRow {
    std::string_view name; // one word or two
    std::string_view operands;
    std::string_view about;                     // empty: for programs only
    Command (*read)(std::string_view operands); // with a line end and the document, if one is carried
    bool on_page = false;                       // allowed to a page with --http-control
    bool raw = false;                           // the operands are one text, else words
    bool carries_document = false;              // the file that its operand names
};

std::span<const CommandRow> command_rows();
// The first row whose name begins with the word; null: there is none.
const CommandRow* command_named(std::string_view word);
std::string_view first_word(std::string_view line);

// Throws the UsageError about a line that is too long or holds control characters.
[[noreturn]] void refuse_line();
// Throws the UsageError about a place in a text, which it shows.
[[noreturn]] void refuse_at(std::string_view text, const vor::WordError& error);
// Reads a line and the document after its end, if it carries one. Throws a UsageError.
Command parse_command(std::string_view request);

} // namespace vorsim::server
