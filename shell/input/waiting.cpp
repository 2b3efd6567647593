#include "input/waiting.hpp"

#include <cerrno>
#include <termios.h>

namespace vorcfg {

namespace {

volatile std::sig_atomic_t interrupt_came;

} // namespace

Waiting::Waiting()
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, &before_);
}

Waiting::~Waiting()
{
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool Waiting::wait(int input)
{
    pollfd waited{input, POLLIN, 0};
    if (!wait({&waited, 1})) {
        tcflush(input, TCIFLUSH);
    }
    return !interrupted_;
}

bool Waiting::wait(std::span<pollfd> inputs)
{
    struct sigaction comes {};
    struct sigaction before {};
    comes.sa_handler = [](int) { interrupt_came = 1; };
    interrupt_came = 0;
    sigaction(SIGINT, &comes, &before);
    while (ppoll(inputs.data(), inputs.size(), nullptr, &before_) < 0 && errno == EINTR && interrupt_came == 0) {}
    sigaction(SIGINT, &before, nullptr);
    interrupted_ = interrupt_came != 0;
    return !interrupted_;
}

} // namespace vorcfg
