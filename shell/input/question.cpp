#include "input/question.hpp"

#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "input/complaint.hpp"
#include "input/waiting.hpp"

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
    if (left) { // Ctrl-C and Ctrl-D answer nothing
        throw Complaint{"interrupted; nothing was sent", exit_ended};
    }
    return answer == "y" || answer == "yes" || answer == "Y";
}

} // namespace vorcfg
