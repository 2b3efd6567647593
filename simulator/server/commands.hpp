// commands.hpp: what a running gateway is asked and told, as a line: one table, one parser.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "server/command.hpp"

namespace vorsim {

struct CommandRow {
    // What goes over the connection besides an answer.
    enum class Carries : std::uint8_t { line, document, stream };

    std::string_view name; // of one word or two
    std::string_view operands;
    std::string_view about;                     // empty: a program's to ask for
    Command (*read)(std::string_view operands); // with a line end and the document behind them, where one is carried
    Carries carries = Carries::line;
    bool on_page = false;  // a page that may switch may do so
    bool sentence = false; // the operands are taken as they stand, else they are words
};

std::span<const CommandRow> command_rows();
// The first row whose name is the word, or begins with it; null: there is none.
const CommandRow* command_named(std::string_view word);
std::string_view first_word(std::string_view line);

// Throws the UsageError about a line that cannot be taken as one.
[[noreturn]] void refuse_line();
// Reads a line and, behind its end, the document that it carries. Throws a UsageError.
Command parse_command(std::string_view request);

} // namespace vorsim
