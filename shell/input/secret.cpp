#include "input/secret.hpp"

#include <bitset>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "text/file.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

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

} // namespace

// The terminal with its echo off; restored whatever happens.
class QuietTerminal {
public:
    QuietTerminal() : terminal_(open("/dev/tty", O_RDWR | O_CLOEXEC))
    {
        if (terminal_ < 0 || tcgetattr(terminal_, &before_) != 0) {
            throw InputError{.text = "no terminal to prompt on",
                             .exit = exit_no_input,
                             .hint = "give @FILE, or - for a line of standard input"};
        }
        interrupted = 0;
        struct sigaction action {};
        for (std::size_t i = 0; i < std::size(signals); i++) {
            // without SA_RESTART, so that the read ends; not stopped, since it would continue with its echo on
            action.sa_handler = signals[i] == SIGTSTP ? SIG_IGN : interrupt;
            sigaction(signals[i], &action, &actions_[i]);
        }
        termios quiet = before_;
        quiet.c_lflag &= static_cast<tcflag_t>(~static_cast<tcflag_t>(ECHO));
        tcsetattr(terminal_, TCSAFLUSH, &quiet);
    }
    QuietTerminal(const QuietTerminal&) = delete;
    QuietTerminal& operator=(const QuietTerminal&) = delete;

    ~QuietTerminal()
    {
        tcsetattr(terminal_, TCSAFLUSH, &before_);
        close(terminal_);
        for (std::size_t i = 0; i < std::size(signals); i++) {
            sigaction(signals[i], &actions_[i], nullptr);
        }
        if (interrupted != 0) {
            raise(interrupted);
        }
    }

    std::string line(std::string_view name) const
    {
        dprintf(terminal_, "%.*s: ", static_cast<int>(name.size()), name.data());
        struct LineEnd {
            ~LineEnd() { dprintf(terminal, "\n"); }
            const int terminal;
        } const line_end{terminal_};
        std::string line;
        try {
            line = interrupted == 0 ? line_from(terminal_, "the terminal") : "";
        } catch (const InputError&) {
            if (interrupted == 0) {
                throw;
            }
        }
        if (interrupted != 0) { // what was typed so far is no secret
            throw InputError{"interrupted; nothing was sent", exit_ended};
        }
        return line;
    }

private:
    static constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    const int terminal_;
    termios before_{};
    struct sigaction actions_[std::size(signals)]{};
};

namespace {

bool is_unquoted(const Word& word, std::string_view text)
{
    return !word.quoted && word.text == text;
}

bool is_prompt(const Word& word)
{
    return is_unquoted(word, "?") || (is_unquoted(word, "-") && isatty(STDIN_FILENO) != 0);
}

std::string credential(std::string_view name)
{
    if (name.empty() || name == "." || name == ".." || name.find('/') != name.npos) {
        throw InputError{
            .text = fmt::format("a credential's name must not be empty or contain /, not {}", vor::quoted(name)),
            .exit = exit_no_input,
            .hint = "a file of such a name is given as @./cred:NAME"};
    }
    const std::filesystem::path directory = credentials_directory();
    if (directory.empty()) {
        throw InputError{.text = fmt::format("no credential {}: CREDENTIALS_DIRECTORY is not set", vor::quoted(name)),
                         .exit = exit_no_input,
                         .hint = fmt::format("systemd sets it for a unit with LoadCredential={}:FILE", name)};
    }
    const std::string path = (directory / name).string();
    return one_line(content_of(path), path);
}

constexpr int first_descriptor = STDERR_FILENO + 1;
constexpr int most_descriptors = 256;

std::bitset<most_descriptors>& given_descriptors()
{
    static std::bitset<most_descriptors> given;
    return given;
}

std::optional<int> descriptor_in(std::string_view digits)
{
    const auto number = vor::number_in<int>(digits);
    return number && first_descriptor <= *number && *number < most_descriptors ? number : std::nullopt;
}

// One line, up to the end, for all who name it: it can be read once, and is closed then.
std::string line_of_descriptor(std::string_view digits)
{
    static std::map<int, std::string> contents;
    const auto number = descriptor_in(digits);
    if (!number) {
        throw InputError{.text = fmt::format("a descriptor must be {} to {}, not {}", first_descriptor,
                                             most_descriptors - 1, vor::quoted(digits)),
                         .exit = exit_no_input,
                         .hint = "- is a line of standard input; a file of such a name is given as @./fd:N"};
    }
    const std::string name = fmt::format("descriptor {}", *number);
    if (const auto known = contents.find(*number); known != contents.end()) {
        return one_line(known->second, name);
    }
    const bool is_given = given_descriptors()[static_cast<std::size_t>(*number)];
    if (is_given && isatty(*number) != 0) {
        throw InputError{.text = fmt::format("{} is a terminal", name), .exit = exit_no_input, .hint = "? prompts"};
    }
    const int flags = is_given ? fcntl(*number, F_GETFL) : -1;
    if (flags < 0 || (flags & O_ACCMODE) == O_WRONLY) {
        throw InputError{.text = fmt::format("{} is not open to read", name),
                         .exit = exit_no_input,
                         .hint = fmt::format("a shell opens it with {}<FILE", *number)};
    }
    fcntl(*number, F_SETFL, flags & ~O_NONBLOCK);
    try {
        return one_line(contents.emplace(*number, vor::content_of(fdopen(*number, "r"))).first->second, name);
    } catch (const vor::FileError& error) {
        throw InputError{fmt::format("cannot read {}: {}", name, error.what()), exit_no_input};
    }
}

// Whether this process has no credentials, or not this descriptor.
bool is_of_another_process(const Word& word)
{
    std::string_view text = word.text;
    if (word.quoted || !text.starts_with('@')) {
        return false;
    }
    text.remove_prefix(1);
    if (text.starts_with(descriptor_scheme)) {
        const auto number = descriptor_in(text.substr(descriptor_scheme.size()));
        return number && !given_descriptors()[static_cast<std::size_t>(*number)];
    }
    return text.starts_with(credential_scheme) && credentials_directory().empty();
}

std::string read_secret(const Word& word, const SecretSources& sources)
{
    std::string_view text = word.text;
    if (!word.quoted && text.starts_with('@')) {
        text.remove_prefix(1);
        if (text.starts_with(credential_scheme)) {
            return credential(text.substr(credential_scheme.size()));
        }
        if (text.starts_with(descriptor_scheme)) {
            return line_of_descriptor(text.substr(descriptor_scheme.size()));
        }
        const std::string path = (sources.directory / text).string();
        return one_line(content_of(path), path);
    }
    if (is_unquoted(word, "-")) {
        if (!sources.standard_input) {
            throw InputError{"standard input already provides the calls or their variables"};
        }
        return line_from(STDIN_FILENO, "standard input");
    }
    if (!sources.literals || word.exposed) {
        throw InputError{.text = "not accepted on the command line, where others can read it",
                         .hint = "give @FILE, - for a line of standard input, or '?' for a prompt"};
    }
    if (word.text.empty() && !word.quoted) { // a cell without a text, say
        throw InputError{.text = "must not be empty", .hint = "write an empty secret as \"\""};
    }
    if (word.text.find_first_of(std::string_view("\n\0", 2)) != std::string::npos) {
        throw InputError{"must be one line"};
    }
    return word.text;
}

} // namespace

bool Secrets::waits(const Word& word) const
{
    if (is_prompt(word)) {
        return sources_.prompts_wait;
    }
    return sources_.input_waits && ((is_unquoted(word, "-") && sources_.standard_input) || is_of_another_process(word));
}

const std::string& Secrets::read(const Word& word, const std::string& name, std::size_t line)
{
    if (waits(word)) {
        postponed_ = postponed_ || is_prompt(word);
        return word.text;
    }
    const auto place = std::pair(line, word.index);
    const auto known = known_.find(place);
    if (known != known_.end()) {
        return known->second;
    }
    return known_.emplace(place, is_prompt(word) ? prompted(name) : read_secret(word, sources_)).first->second;
}

std::string Secrets::prompted(const std::string& name)
{
    if (!sources_.prompts) {
        throw InputError{"nobody is there to be prompted", exit_no_input};
    }
    const auto terminal = terminal_ == nullptr ? std::make_shared<QuietTerminal>() : terminal_;
    terminal_ = asking_ ? terminal : nullptr;
    return terminal->line(name);
}

void Secrets::ask(const std::function<void()>& read_lines)
{
    sources_.prompts_wait = false;
    if (postponed_) {
        asking_ = true;
        read_lines();
        asking_ = false;
        terminal_.reset();
    }
}

bool is_secret_source(const Word& word)
{
    return !word.quoted && (word.text.starts_with('@') || word.text == "-" || word.text == "?");
}

void take_descriptors()
{
    for (int descriptor = first_descriptor; descriptor < most_descriptors; descriptor++) {
        given_descriptors()[static_cast<std::size_t>(descriptor)] = fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
    }
}

std::filesystem::path credentials_directory()
{
    const char* const directory = std::getenv("CREDENTIALS_DIRECTORY");
    return directory != nullptr ? directory : "";
}

Word word_of_file(std::string_view path)
{
    const bool looks_otherwise = path.starts_with(credential_scheme) || path.starts_with(descriptor_scheme);
    return {{.text = fmt::format("@{}{}", looks_otherwise ? "./" : "", path)}};
}

} // namespace vorcfg::input
