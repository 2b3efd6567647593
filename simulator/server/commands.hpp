// commands.hpp: what a running gateway is asked and told, as a line: one table, one parser.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "record/filter.hpp"
#include "server/options.hpp"

namespace vorsim {

class Control;
class Messages;
class Recorder;
struct World;

// What commands are about.
struct Running {
    World& world;
    Messages& messages;
    Control& control;
    const Recorder& recorder;
    bool konfd_served = false;
};

// Answered at once; what it throws is the answer, too.
using Request = std::function<std::string(Running& running)>;

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

struct Quit {};

using Command = std::variant<Request, Watch, Wait, Quit>;

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

// Reads a line and, behind its end, the document that it carries. Throws a UsageError.
Command parse_command(std::string_view request);

} // namespace vorsim
