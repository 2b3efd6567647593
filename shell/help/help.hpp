// help.hpp: what there is to call, and how.
#pragma once

#include <string>
#include <string_view>

#include "input/command.hpp"
#include "rows/row.hpp"

namespace vorcfg {

// What help and the manual both say.
inline constexpr std::string_view about_vorcfg = "changes a gateway's settings, one call or one batch file at a time";
inline constexpr std::string_view about_words =
    "Numbers are decimal or 0x. A secret is given as @FILE, - (a line of standard\n"
    "input) or ? (a prompt); left out on the command line, it is asked for.\n";
inline constexpr std::string_view about_batch_secrets =
    "In a file a secret may also stand as it is, and a quoted text always does; @FILE is relative to the file's own "
    "directory.";
inline constexpr std::string_view about_batch_words =
    "Arguments may be named, behind those that are not: ip set-default-gateway 192.168.1.1 iface_num=0 "
    "config_option=1. "
    "A word with another name in front is a text, unless the name is nearly an argument's; between double quotes it "
    "always is one.";
inline constexpr std::string_view about_variables =
    "${site} stands for what --set site=17 says, or a line site=17 of --vars FILE, where a text with blanks stands "
    "between double quotes too. The value becomes part of the word, whatever it holds; $${ is ${. What is not known or "
    "not used is complained about.";
inline constexpr std::string_view about_bytes =
    "A byte order mark in front of a line and a carriage return at its end are passed over; a secret with one is "
    "refused, and so is an empty one unless it is written \"\". A line has at most 65536 bytes, a file 64 MiB.";
inline constexpr std::string_view about_verdicts =
    "Each call is watched at the platform's boundary, and its verdict tells what was really sent and answered. "
    "What the library would pass on mangled is refused before anything is sent.";
inline constexpr std::string_view about_prompt =
    "Without words vorcfg takes its lines from standard input, each as it would stand in a file or behind vorcfg "
    "with its options. At a terminal they are edited, completed by Tab and remembered, save those in which a secret "
    "may stand; Ctrl-C ends a line, Ctrl-D or exit the session. From a pipe they are made as they come, a fault ends "
    "none but its own, and the exit code is that of the worst; where nothing comes, the help is shown. "
    "At a terminal a call that may cut the link that one works over asks first, unless --yes is given.";

std::string help();
std::string help(const Family& family);
std::string help(const Row& row);
std::string help(const Command& command);

// Every call, of one family where it is named, or of those that hold the word.
std::string list(const Family* family, bool json);
std::string search(std::string_view word, bool json);

} // namespace vorcfg
