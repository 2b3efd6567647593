#include "input/terminal.hpp"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <termios.h>
#include <unistd.h>

#include "input/input_error.hpp"

namespace vorcfg::input {

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

bool Waiting::wait(std::span<pollfd> inputs, const timespec* limit)
{
    struct sigaction comes {};
    struct sigaction before {};
    comes.sa_handler = [](int) { interrupt_came = 1; };
    interrupt_came = 0;
    sigaction(SIGINT, &comes, &before);
    while (ppoll(inputs.data(), inputs.size(), limit, &before_) < 0 && errno == EINTR && interrupt_came == 0) {}
    sigaction(SIGINT, &before, nullptr);
    interrupted_ = interrupt_came != 0;
    return !interrupted_;
}

bool at_terminal()
{
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

bool agreed(std::string_view question)
{
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (terminal < 0) {
        return false;
    }
    Waiting for_answer;
    dprintf(terminal, "%.*s [y/N] ", static_cast<int>(question.size()), question.data());
    std::string answer;
    char byte;
    ssize_t got = -1;
    while (for_answer.wait(terminal) && (got = read(terminal, &byte, 1)) == 1 && byte != '\n') {
        answer += byte;
    }
    const bool left = got != 1 || for_answer.was_interrupted();
    dprintf(terminal, "%s", left ? "\n" : "");
    close(terminal);
    if (left) { // Ctrl-C and Ctrl-D are no answer
        throw InputError{"interrupted; nothing was sent", exit_ended};
    }
    return answer == "y" || answer == "yes" || answer == "Y";
}

} // namespace vorcfg::input
