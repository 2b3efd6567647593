// waiting.hpp: waiting for input that Ctrl-C may end.
#pragma once

#include <csignal>

namespace vorcfg {

// While it lives, Ctrl-C is held back until a wait: one that came between two keys is not lost.
class Waiting {
public:
    Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting();

    // For standard input; false where Ctrl-C ended it.
    bool wait();
    bool was_interrupted() const { return interrupted_; }

private:
    sigset_t before_{};
    bool interrupted_ = false;
};

} // namespace vorcfg
