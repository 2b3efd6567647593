// Starts the tools of the build under test, in a directory of their own. A line of vorcfg's JSON or of a journal that
// is not as described is a failure.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace processes {

// A directory that is removed at the end.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

struct Output {
    std::string text; // standard output and standard error, as a terminal shows them
    int exit_code;    // 128 + n for signal n
};

// All of a file; nothing of none.
std::string contents(const std::filesystem::path& file);

// A place where `vorcfg` and `vorsim` can be called by name, with a platform
// directory of its own; commands run in a copy of nothing but the examples.
class Workplace {
public:
    Workplace();
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    const std::filesystem::path& path() const { return directory_.path(); }

    // Runs a line as the shell would.
    Output run(const std::string& command) const;

    // The environment of everything started here.
    std::vector<std::string> environment() const;
    // Gives this process the same platform directories.
    void enter() const;

private:
    TemporaryDirectory directory_;
};

// A running tool; stopped by SIGTERM when it goes out of scope.
class Tool {
public:
    Tool(const Workplace& workplace, const std::string& name, const std::vector<std::string>& options);
    ~Tool();
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;

    // The next line of its output, without the newline; empty if none comes in time.
    std::string next_line();
    pid_t pid() const { return pid_; }
    // Stopped, it answers nothing until it is resumed.
    void suspend() const;
    void resume() const;
    void signal(int number) const;
    // Ends it by the signal; its exit code.
    int stop(int signal_number);

private:
    pid_t pid_ = -1;
    int output_ = -1;
    std::string pending_;
};

// A program at a terminal of its own, in a workplace; hung up when it goes out of scope.
class Terminal {
public:
    Terminal(const Workplace& workplace, const std::vector<std::string>& command);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(const std::string& text) const;
    // The output since the last call, up to and including the text; all output if the text does not come.
    std::string shown_until(const std::string& wanted);
    // What is shown until the program ends, and its exit code.
    Output rest();

private:
    pid_t pid_ = -1;
    int terminal_ = -1;
    std::string pending_;
};

// A running vorsim, once it is ready.
class Gateway : public Tool {
public:
    Gateway(const Workplace& workplace, const std::vector<std::string>& options);
};

} // namespace processes
