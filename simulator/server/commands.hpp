// commands.hpp: what a running gateway is asked and told, as a line: one table, one parser.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "faults/rule.hpp"
#include "gateway/readings.hpp"
#include "record/filter.hpp"
#include "server/options.hpp"

namespace vorsim {

struct Show {
    bool json = false;
    std::string manager; // empty: all
    std::string object;
};
struct Overview {};
struct Reset {};
struct Load {
    std::string file;
    std::optional<std::string> document; // none: the file could not be read
};
struct Quit {};

struct AddFault {
    faults::Rule rule;
};
struct ListFaults {};
struct ClearFaults {
    std::optional<unsigned> number; // none: all
};
struct StopManager {
    std::uint16_t sap;
};
struct StartManager {
    std::uint16_t sap;
};
// How the gateway behaves from now on.
using Switch = std::variant<AddFault, ListFaults, ClearFaults, StopManager, StartManager, Setting>;

// Answered at once.
using Request = std::variant<Show, Overview, Reset, Load, Quit, Switch>;

struct Watch {
    enum class As : std::uint8_t { line, json, event }; // an event: its number, a blank, and JSON without the bytes
    As as = As::line;
    Filter filter;
};
struct Wait {
    std::string call;
    std::string object; // empty: any
    std::chrono::milliseconds within{10'000};
};

using Command = std::variant<Request, Watch, Wait>;

struct CommandRow {
    // What goes over the connection besides an answer.
    enum class Carries : std::uint8_t { line, document, stream };

    std::string_view name; // of one word or two
    std::string_view operands;
    std::string_view about; // empty: a program's to ask for
    Command (*read)(std::string_view operands);
    Carries carries = Carries::line;
    bool on_page = false;  // a page that may switch may do so
    bool sentence = false; // the operands are taken as they stand, else they are words
};

std::span<const CommandRow> command_rows();
// The first row whose name is the word, or begins with it; null: there is none.
const CommandRow* command_named(std::string_view word);
std::string_view first_word(std::string_view line);

// Reads a line and, behind its end, the document that it carries. Throws a UsageError.
Command parse_command(std::string_view request);

} // namespace vorsim
