// help.hpp: what there is to call, and how.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "input/options.hpp"
#include "input/words.hpp"
#include "rows/row.hpp"

namespace vorcfg {

std::string help();
std::string help(const Family& family);
std::string help(const Row& row);
std::string help(const Command& command);

// Every call, of one family where it is named, or of those that hold the word.
std::string list(const Family* family, bool json);
std::string search(std::string_view word, bool json);

// The manual pages: those in pages/, with what the tables know filled in, and one of each family; in mdoc.
std::vector<std::string> manual_pages(); // "vorcfg.1", "vorcfg-gpio.1", ...
// Throws a InputError that names the nearest.
std::string manual(std::string_view page);

// --- Completion, of any shell ---------------------------------------------------------

struct Candidate {
    std::string word; // empty: nothing to put there, only something to say
    std::string hint;
};

// What the last of the words may become; it may be empty.
std::vector<Candidate> candidates(std::span<const Word> words);

// Whether a blank follows, or the word goes on.
bool is_whole(std::string_view word);

// One a line, its hint behind a tab.
std::string completions(std::span<const Word> words);

// The script by which a shell asks for them. A InputError names the shells there are.
std::string_view completion_script(std::string_view shell);
std::vector<std::string_view> completed_shells();

} // namespace vorcfg
