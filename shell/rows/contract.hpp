// contract.hpp: what the headers and the rows say about families and calls, for help, completion and the pages. The
// headers are built in, so that each sentence is written once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rows/row.hpp"

namespace vorcfg::rows {

struct CallContract {
    std::string symbol;
    std::string declaration;
    std::vector<std::string> paragraphs; // the first begins with the summary
    std::vector<std::pair<std::string, std::string>> arguments;
    std::string returned; // "the common codes" where the header says nothing else

    std::string summary() const;             // "set a port's bit rate"
    std::vector<std::int32_t> codes() const; // those that it names
    std::string_view about(const Argument& argument) const;
    std::string_view meaning(const Argument& argument) const; // about it, but empty where only its manager knows
    std::string_view unit(const Argument& argument) const;    // "seconds", "the manager's"; empty where none is given
    bool passes_unchanged(const Argument& argument) const;    // whatever it is, and its manager knows what it means
    // For vorcfg's users: without how the value is passed on, and without the common codes.
    std::string_view told(const Argument& argument) const;
    std::string told_return() const; // may be empty
};

struct HeaderContract {
    std::vector<std::string> paragraphs; // of the comment at its top
    std::vector<CallContract> calls;
};

const HeaderContract& contract_of(const Family& family);
const CallContract& contract_of(const Row& row);
std::string about(const Family& family); // "digital inputs and outputs"

// What the types of the headers lay down.
struct DeclaredCode {
    std::int32_t number;
    std::string name; // "VOR_CODE_DONE"
};
struct DeclaredField {
    std::string name;
    std::string type; // "vor_char"
    std::uint16_t offset;
    std::uint16_t size;
    std::string about; // may be empty
};
struct DeclaredRecord {
    std::string name; // "GPIO_PIN_STATS"
    std::uint16_t size;
    std::vector<DeclaredField> fields;
};
std::vector<DeclaredCode> declared_codes();
std::vector<DeclaredRecord> declared_records(); // those that have the same form on every processor

// For vorcfg's users: without the sentences about vor_errno and message buffers.
std::vector<std::string> told(const std::vector<std::string>& paragraphs);

// --- Rows and arguments in words -------------------------------------------------------

std::string placeholder(const Argument& argument);        // "PORT_NUM"
std::string usage_of(const Row& row);                     // "gpio set-value PORT_NUM VALUE"
std::string example_call(const Row& row);                 // "gpio set-value 1 1"
std::string summary_of(const Row& row);                   // "set an output"
std::string sentence(std::string summary);                // "Set an output."
std::vector<std::string_view> remarks_of(const Row& row); // what its marks mean to the caller
std::string_view type_name(const Argument& argument);

// The numbers or words accepted: "0 to 255", "0 to 1, off or on", "error or warning".
std::string accepted(const Argument& argument);

// What every page says once about the values.
inline constexpr std::string_view default_meaning =
    "Where the meaning of a value is not given, the manager defines it. The examples use values of a fictional site, "
    "tower 17.";

// How a call ends, in the exit code of vorcfg.
std::string exits_of_a_call();

// The words of the example that are this argument's; empty where it has none.
std::string example_of(const Row& row, const Argument& argument);

// "number, 0 to 255; never sent"
std::string kind_text(const Argument& argument);

} // namespace vorcfg::rows
