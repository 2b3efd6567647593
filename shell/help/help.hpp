// help.hpp: what there is to call, and how.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "rows/row.hpp"

namespace vorcfg {

// What may stand first on a line in place of a family; the first row is a call itself, without a name.
struct Command {
    std::string_view name;
    std::string_view usage;
    std::string_view about;
    std::string_view more;
};

std::span<const Command> commands();

inline constexpr std::string_view about_vorcfg = "changes a gateway's settings, one call or one batch file at a time";
inline constexpr std::string_view about_words =
    "Numbers are decimal or 0x. A secret is given as @FILE, - (a line of standard\n"
    "input) or ? (a prompt); left out on the command line, it is asked for.\n";

std::string help();
std::string help(const Family& family);
std::string help(const Row& row);
std::string help_on_command(std::string_view name); // empty: none of that name

// Every call, of one family where it is named, or of those that hold the word.
std::string list(const Family* family, bool json);
std::string search(std::string_view word, bool json);

} // namespace vorcfg
