#include "input/secret.hpp"

#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "text/file.hpp"

namespace vorcfg::input {

namespace {

// Only the end of the line is removed: anything else that an editor adds would be part of the secret.
std::string one_line(std::string text, const std::string& source)
{
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    const auto refuse_if = [&](bool wrong, std::string_view why, std::string hint = {}) {
        if (wrong) {
            throw InputError{.text = fmt::format("{} {}", source, why), .exit = exit_no_input, .hint = std::move(hint)};
        }
    };
    refuse_if(text.empty(), "is empty", "write an empty secret as \"\" in a file of calls");
    refuse_if(text.starts_with(vor::byte_order_mark), "begins with a byte order mark", "save it as plain text");
    refuse_if(text.ends_with('\r'), "ends with a carriage return", "save it with Unix line endings");
    refuse_if(text.find('\n') != std::string::npos, "has more than one line");
    refuse_if(text.find('\0') != std::string::npos, "contains a zero byte");
    return text;
}

// Byte by byte: the bytes after the line belong to the next secret.
std::string line_from(int descriptor, const char* source)
{
    std::string line;
    char byte;
    ssize_t got;
    while ((got = ::read(descriptor, &byte, 1)) == 1 && byte != '\n') {
        line += byte;
        if (line.size() > vor::Bounds().line) {
            throw InputError{fmt::format("{} has a line of more than {} bytes", source, vor::Bounds().line),
                             exit_no_input};
        }
    }
    if (got != 1 && line.empty()) {
        throw InputError{fmt::format("{} ended before the secret", source), exit_no_input};
    }
    return one_line(line, source);
}

volatile std::sig_atomic_t interrupted;

void interrupt(int signal)
{
    interrupted = signal;
}

// The terminal with its echo off; restored whatever happens.
class Prompt {
public:
    explicit Prompt(std::string_view name) : terminal(open("/dev/tty", O_RDWR | O_CLOEXEC))
    {
        if (terminal < 0 || tcgetattr(terminal, &before_) != 0) {
            throw InputError{.text = "no terminal to prompt on",
                             .exit = exit_no_input,
                             .hint = "give @FILE, or - for a line of standard input"};
        }
        struct sigaction action {};
        for (std::size_t i = 0; i < std::size(signals); i++) {
            // without SA_RESTART, so that the read ends; not stopped, since it would continue with its echo on
            action.sa_handler = signals[i] == SIGTSTP ? SIG_IGN : interrupt;
            sigaction(signals[i], &action, &actions_[i]);
        }
        termios quiet = before_;
        quiet.c_lflag &= static_cast<tcflag_t>(~static_cast<tcflag_t>(ECHO));
        tcsetattr(terminal, TCSAFLUSH, &quiet);
        dprintf(terminal, "%.*s: ", static_cast<int>(name.size()), name.data());
    }
    Prompt(const Prompt&) = delete;
    Prompt& operator=(const Prompt&) = delete;

    ~Prompt()
    {
        tcsetattr(terminal, TCSAFLUSH, &before_);
        dprintf(terminal, "\n");
        close(terminal);
        for (std::size_t i = 0; i < std::size(signals); i++) {
            sigaction(signals[i], &actions_[i], nullptr);
        }
        if (interrupted != 0) {
            raise(interrupted);
        }
    }

    const int terminal;

private:
    static constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    termios before_{};
    struct sigaction actions_[std::size(signals)]{};
};

bool is_prompt(const Word& word)
{
    return !word.quoted && word.text == "?";
}

std::string read_secret(const Word& word, std::string_view name, const SecretSources& sources)
{
    if (!word.quoted && word.text.starts_with('@')) {
        const std::string path = (sources.directory / word.text.substr(1)).string();
        return one_line(content_of(path), path);
    }
    if (!word.quoted && word.text == "-") {
        if (!sources.standard_input) {
            throw InputError{"standard input already provides the calls or their variables"};
        }
        return line_from(STDIN_FILENO, "standard input");
    }
    if (is_prompt(word)) {
        const Prompt prompt(name);
        return line_from(prompt.terminal, "the terminal");
    }
    if (!sources.literals || word.exposed) {
        throw InputError{.text = "not accepted on the command line, where others can read it",
                         .hint = "give @FILE, - for a line of standard input, or '?' for a prompt"};
    }
    if (word.text.empty() && !word.quoted) { // a cell without a text, say
        throw InputError{.text = "must not be empty", .hint = "write an empty secret as \"\""};
    }
    return word.text;
}

} // namespace

const std::string& Secrets::read(const Word& word, const std::string& name, std::size_t line)
{
    if (sources_.input_waits && sources_.standard_input && !word.quoted && word.text == "-") {
        return word.text;
    }
    if (sources_.prompts_wait && is_prompt(word)) {
        postponed_ = true;
        return word.text;
    }
    const auto place = std::pair(line, word.index);
    const auto known = known_.find(place);
    return known != known_.end() ? known->second
                                 : known_.emplace(place, read_secret(word, name, sources_)).first->second;
}

bool Secrets::ask_now()
{
    sources_.prompts_wait = false;
    return postponed_;
}

bool is_secret_source(const Word& word)
{
    return !word.quoted && (word.text.starts_with('@') || word.text == "-" || word.text == "?");
}

} // namespace vorcfg::input
