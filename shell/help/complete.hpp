// complete.hpp: what may stand next on a line, for the completion of any shell.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "input/words.hpp"

namespace vorcfg {

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

// The script by which a shell asks for them. A Complaint names the shells there are.
std::string_view completion_script(std::string_view shell);
std::vector<std::string_view> completed_shells();

} // namespace vorcfg
