// commands.hpp: what a running gateway is told to do: faults, managers, readings.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "faults/rule.hpp"

namespace vorsim {

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
struct SetReading {
    std::string words;
};
using Command = std::variant<AddFault, ListFaults, ClearFaults, StopManager, StartManager, SetReading>;

// Whether the word begins one of these commands.
bool is_command(std::string_view word);

// "fault add RULE", "fault list", "fault clear [N]", "stop MANAGER", "start
// MANAGER", "set READING VALUE". Throws a UsageError.
Command command_of(std::string_view request);

inline constexpr std::size_t longest_command = 4000;

} // namespace vorsim
