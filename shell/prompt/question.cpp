#include "prompt/question.hpp"

#include <csignal>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace vorcfg {

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
    struct sigaction ends_read {};
    struct sigaction before {};
    ends_read.sa_handler = [](int) {};
    sigaction(SIGINT, &ends_read, &before);
    dprintf(terminal, "%.*s [y/N] ", static_cast<int>(question.size()), question.data());
    std::string answer;
    char byte;
    ssize_t got;
    while ((got = read(terminal, &byte, 1)) == 1 && byte != '\n') {
        answer += byte;
    }
    if (got != 1) {
        dprintf(terminal, "\n");
        answer.clear();
    }
    sigaction(SIGINT, &before, nullptr);
    close(terminal);
    return answer == "y" || answer == "yes" || answer == "Y";
}

} // namespace vorcfg
