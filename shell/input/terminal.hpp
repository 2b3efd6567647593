// terminal.hpp: questions at a terminal, and waiting for its keys.
#pragma once

#include <csignal>
#include <ctime>
#include <poll.h>
#include <span>
#include <string_view>
#include <unistd.h>

namespace vorcfg::input {

// While it lives, Ctrl-C is blocked until a wait, so that one between two keys is not lost.
class Waiting {
public:
    Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting();

    // False if Ctrl-C ended it.
    bool wait(int input = STDIN_FILENO);
    bool wait(std::span<pollfd> inputs, const timespec* limit = nullptr);
    bool was_interrupted() const { return interrupted_; }

private:
    sigset_t before_{};
    bool interrupted_ = false;
};

// Whether standard input and standard output are a terminal.
bool at_terminal();

// True for y or yes, false for anything else. Throws an InputError where Ctrl-C or Ctrl-D ends the question.
bool agreed(std::string_view question);

} // namespace vorcfg::input
