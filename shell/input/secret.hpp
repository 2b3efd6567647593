// secret.hpp: secrets from a file, a service's credentials, a descriptor, standard input or a prompt. A literal secret
// is accepted in files of calls only, never on the command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "input/words.hpp"

namespace vorcfg::input {

struct SecretSources {
    bool literals = false;             // as in a file of calls
    bool standard_input = true;        // false: the calls or their variables are read from it
    bool prompts = true;               // false: nobody is there to be asked
    bool prompts_wait = false;         // until the whole file has been checked
    bool input_waits = false;          // the file is only checked
    std::filesystem::path directory{}; // that names of files are relative to
    std::optional<Word> left_out{};    // used where a line leaves its secret out
};

class QuietTerminal;

// Each secret is read once, however often its line is read.
class Secrets {
public:
    explicit Secrets(SecretSources given) : sources_(std::move(given)) {}

    const SecretSources& sources() const { return sources_; }

    // The secret of a word, identified by the line's number and the word's: @FILE, @cred:NAME, @fd:N, - for a line of
    // standard input, or ? for a prompt that shows the name; at a terminal - prompts, too. The word itself where it
    // waits.
    const std::string& read(const Word& word, const std::string& name, std::size_t line);

    // Whether it is not read yet: a prompt, before `ask`; and where no call will be made, standard input, and what
    // only the process that makes the calls has.
    bool waits(const Word& word) const;
    void leave_input() { sources_.input_waits = true; }
    // Asks for what waited for a prompt, if anything did: `read_lines` reads the lines again. There is no echo from the
    // first prompt to the last, so that what is typed or pasted ahead is not shown.
    void ask(const std::function<void()>& read_lines);

private:
    std::string prompted(const std::string& name);

    SecretSources sources_;
    bool postponed_ = false;
    bool asking_ = false;
    std::shared_ptr<QuietTerminal> terminal_;
    std::map<std::pair<std::size_t, std::size_t>, std::string> known_;
};

// Whether the word says where a secret comes from.
bool is_secret_source(const Word& word);

// What follows the @ of a service's credential and of a descriptor; a file of such a name is given as @./NAME.
inline constexpr std::string_view credential_scheme = "cred:";
inline constexpr std::string_view descriptor_scheme = "fd:";

// Notes the descriptors that the process was given, before it opens one of its own; what it starts does not get them.
void take_descriptors();
// Where the credentials of this service are; empty: it has none.
std::filesystem::path credentials_directory();
// The word for the secret in a file, whatever its name.
Word word_of_file(std::string_view path);

} // namespace vorcfg::input
