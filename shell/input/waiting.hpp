// waiting.hpp: waiting for input that Ctrl-C may end.
#pragma once

#include <csignal>
#include <poll.h>
#include <span>
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

} // namespace vorcfg
