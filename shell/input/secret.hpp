// secret.hpp: secrets come from a file, standard input or a prompt; a literal
// is taken from batch files only, never from the command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "input/words.hpp"

namespace vorcfg {

struct SecretSources {
    bool literals = false;             // a batch file is its operator's own
    bool standard_input = true;        // false: the batch itself comes from there
    bool prompts_wait = false;         // until the whole batch has been checked
    bool input_waits = false;          // the batch is only looked at
    std::filesystem::path directory{}; // what a file's name is relative to
    std::optional<Word> left_out{};    // stands where a line leaves its secret out
};

// Each secret is read once, however often its line is looked at.
class Secrets {
public:
    explicit Secrets(SecretSources given) : sources_(std::move(given)) {}

    const SecretSources& sources() const { return sources_; }

    // The secret that a word stands for: @FILE, - for a line of standard input, ? for a prompt that names it. Its
    // place is the line's number and the word's.
    const std::string& read(const Word& word, const std::string& name, std::size_t line);

    void leave_input() { sources_.input_waits = true; }
    // Whether a prompt was put off; from now on none is.
    bool ask_now();

private:
    SecretSources sources_;
    bool put_off_ = false;
    std::map<std::pair<std::size_t, std::size_t>, std::string> known_;
};

// Whether the word says where a secret comes from.
bool is_secret_source(const Word& word);

} // namespace vorcfg
