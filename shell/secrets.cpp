#include "secrets.hpp"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "complaint.hpp"

namespace vorcfg {

static std::string checked(std::string text, std::string_view name, const std::string& source)
{
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    if (text.ends_with('\r')) {
        text.pop_back();
    }
    if (text.find_first_of(std::string_view("\n\0", 2)) != std::string::npos) {
        throw Complaint(std::string(name) + ": " + source + " holds more than one line of text, or a zero byte",
                        exit_no_input);
    }
    return text;
}

std::string content_of(std::FILE* file, const std::string& what_for, const std::string& name)
{
    std::string content;
    if (file != nullptr) {
        char bytes[4096];
        std::size_t got;
        while ((got = std::fread(bytes, 1, sizeof bytes, file)) != 0) {
            content.append(bytes, got);
        }
    }
    if (file == nullptr || std::ferror(file) != 0) { // a directory can be opened, but not read
        throw Complaint(what_for + "cannot read " + name + ": " + std::strerror(errno), exit_no_input);
    }
    std::fclose(file);
    return content;
}

// Byte by byte: what follows the line is the next secret's.
static std::string line_of(int descriptor, std::string_view name, const char* source)
{
    std::string line;
    char byte;
    ssize_t got;
    while ((got = read(descriptor, &byte, 1)) == 1 && byte != '\n') {
        line += byte;
    }
    if (got != 1 && line.empty()) {
        throw Complaint(std::string(name) + ": nothing to read from " + source, exit_no_input);
    }
    return checked(line, name, source);
}

static volatile std::sig_atomic_t interrupted;

static void interrupt(int signal)
{
    interrupted = signal;
}

// The terminal with its echo off, put right again whatever happens.
class Prompt {
public:
    explicit Prompt(std::string_view name) : terminal(open("/dev/tty", O_RDWR | O_CLOEXEC))
    {
        if (terminal < 0 || tcgetattr(terminal, &before) != 0) {
            throw Complaint(std::string(name) + ": no terminal to ask on; give @FILE, or - for standard input",
                            exit_no_input);
        }
        struct sigaction action {};
        for (std::size_t i = 0; i < std::size(signals); i++) {
            // without SA_RESTART, so that the read ends; stopped and continued, it would go on with its echo
            action.sa_handler = signals[i] == SIGTSTP ? SIG_IGN : interrupt;
            sigaction(signals[i], &action, &actions[i]);
        }
        termios quiet = before;
        quiet.c_lflag &= tcflag_t(~tcflag_t(ECHO));
        tcsetattr(terminal, TCSAFLUSH, &quiet);
        dprintf(terminal, "%.*s: ", int(name.size()), name.data());
    }
    Prompt(const Prompt&) = delete;
    Prompt& operator=(const Prompt&) = delete;

    ~Prompt()
    {
        tcsetattr(terminal, TCSAFLUSH, &before);
        dprintf(terminal, "\n");
        close(terminal);
        for (std::size_t i = 0; i < std::size(signals); i++) {
            sigaction(signals[i], &actions[i], nullptr);
        }
        if (interrupted != 0) {
            raise(interrupted);
        }
    }

    const int terminal;

private:
    static constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    termios before{};
    struct sigaction actions[std::size(signals)]{};
};

std::string secret(const Token& token, std::string_view name, const SecretSources& sources)
{
    if (!token.quoted && token.text.starts_with('@')) {
        const std::string path = (sources.directory / token.text.substr(1)).string();
        return checked(content_of(std::fopen(path.c_str(), "re"), std::string(name) + ": ", path), name, path);
    }
    if (!token.quoted && token.text == "-") {
        if (!sources.standard_input) {
            throw Complaint(std::string(name) + ": standard input is the batch itself");
        }
        return line_of(STDIN_FILENO, name, "standard input");
    }
    if (!token.quoted && token.text == "?") {
        const Prompt prompt(name);
        return line_of(prompt.terminal, name, "the terminal");
    }
    if (!sources.literals) {
        throw Complaint(std::string(name) + ": a secret is not taken from the command line, where others can read it; "
                                            "give @FILE, - for a line of standard input, or '?' for a prompt");
    }
    return token.text;
}

} // namespace vorcfg
