// secret.hpp: secrets from a file, standard input or a prompt. A literal secret is accepted in files of calls only,
// never on the command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "input/words.hpp"

namespace vorcfg::input {

struct SecretSources {
    bool literals = false;             // as in a file of calls
    bool standard_input = true;        // false: the calls or their variables are read from it
    bool prompts_wait = false;         // until the whole file has been checked
    bool input_waits = false;          // the file is only checked
    std::filesystem::path directory{}; // that names of files are relative to
    std::optional<Word> left_out{};    // used where a line leaves its secret out
};

// Each secret is read once, however often its line is read.
class Secrets {
public:
    explicit Secrets(SecretSources given) : sources_(std::move(given)) {}

    const SecretSources& sources() const { return sources_; }

    // The secret of a word: @FILE, - for a line of standard input, ? for a prompt that shows the name. It is identified
    // by the line's number and the word's.
    const std::string& read(const Word& word, const std::string& name, std::size_t line);

    void leave_input() { sources_.input_waits = true; }
    // Whether a prompt was postponed; from now on none is.
    bool ask_now();

private:
    SecretSources sources_;
    bool postponed_ = false;
    std::map<std::pair<std::size_t, std::size_t>, std::string> known_;
};

// Whether the word says where a secret comes from.
bool is_secret_source(const Word& word);

} // namespace vorcfg::input
