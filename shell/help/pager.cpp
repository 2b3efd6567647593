#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

#include "help/help.hpp"
#include "text/text.hpp"

namespace vorcfg::help {

// Where the pager does not exist, the shell exits with 127.
void page(std::string_view text)
{
    constexpr int not_found = 127;
    const char* const given = std::getenv("PAGER");
    const char* const pager = given != nullptr && *given != '\0' ? given : "less -FRX 2>/dev/null";
    bool shown = false;
    if (isatty(STDOUT_FILENO) == 1) {
        std::fflush(stdout);
        const auto before = std::signal(SIGPIPE, SIG_IGN); // a pager may end before it has read everything
        if (std::FILE* const reader = popen(pager, "we")) {
            vor::print(reader, text);
            const int status = pclose(reader);
            shown = !WIFEXITED(status) || WEXITSTATUS(status) != not_found;
        }
        std::signal(SIGPIPE, before);
    }
    if (!shown) {
        vor::print(stdout, text);
    }
}

} // namespace vorcfg::help
