// terminal.hpp: whoever sits at a terminal: asked, or waited for.
#pragma once

#include <csignal>
#include <poll.h>
#include <span>
#include <string_view>
#include <unistd.h>

namespace vorcfg {

// While it lives, Ctrl-C is held back until a wait: one that came between two keys is not lost.
class Waiting {
public:
    Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting();

    // False where Ctrl-C ended it.
    bool wait(int input = STDIN_FILENO);
    bool wait(std::span<pollfd> inputs);
    bool was_interrupted() const { return interrupted_; }

private:
    sigset_t before_{};
    bool interrupted_ = false;
};

// Whether someone sits there: standard input and standard output are a terminal.
bool at_terminal();

// y or yes; anything else, and an interrupt too, is a no.
bool agreed(std::string_view question);

} // namespace vorcfg
