// help.hpp: help, lists of calls, manual pages and completion.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "input/options.hpp"
#include "input/words.hpp"
#include "rows/row.hpp"
#include "text/screen.hpp"

namespace vorcfg::help {

// How wide help is at this terminal, or in a file.
std::size_t help_width(int descriptor);

// All of it; the brief one is on one screen of 24 rows.
std::string help();
std::string help(const rows::Family& family);
std::string help(const rows::Row& row);
std::string help(const input::Command& command);
std::string brief_help();
std::string brief_help(const rows::Family& family);
std::string brief_help(const rows::Row& row);
std::string brief_help(const input::Command& command);

// Shows the text through $PAGER, or less, where standard output is a terminal that is not dumb; else prints it.
void show_in_pager(std::string_view text);
// Shows a manual page, formatted by man or mandoc, else as text in the pager; prints its source where standard output
// is no terminal.
void show_page(const std::string& page);

// Adds a hint to an error about an argument, and lines that show where it is.
void point_out(input::InputError& error, std::span<const input::Word> words);

// All calls, or those of one family.
std::string list(const rows::Family* only, bool json);
// The calls that all words of the query are about, the likeliest first. Throws an InputError where there is none.
std::string search(std::string_view query, bool json, const vor::Screen& screen);

// The manual pages in mdoc: those in pages/, filled in from the tables, and one for each family.
std::vector<std::string> manual_pages(); // "vorcfg.1", "vorcfg-gpio.1", ...
// Throws an InputError that suggests similar names.
std::string manual(std::string_view page);
// What a page says, as text.
std::string text_of_page(std::string_view page);

// --- Completion, for any shell ---------------------------------------------------------

struct Candidate {
    std::string word; // empty: only a hint
    std::string hint;
};

// How the last of the words, which may be empty, can be completed.
std::vector<Candidate> candidates(std::span<const input::Word> words);

// Whether a space follows, or the word continues.
bool is_whole(std::string_view word);

// One per line, followed by a tab and its hint.
std::string completions(std::span<const input::Word> words);

// The script by which a shell asks for them. Throws an InputError that lists the known shells.
std::string_view completion_script(std::string_view shell);
std::vector<std::string_view> completed_shells();

} // namespace vorcfg::help
