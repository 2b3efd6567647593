#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

#include "help/help.hpp"
#include "text/screen.hpp"
#include "text/text.hpp"

namespace vorcfg::help {

// Where the pager does not exist, the shell exits with 127.
void show_in_pager(std::string_view text)
{
    constexpr int not_found = 127;
    const char* const given = std::getenv("PAGER");
    const char* const pager = given != nullptr && *given != '\0' ? given : "less -FRX 2>/dev/null";
    bool shown = false;
    if (isatty(STDOUT_FILENO) == 1 && !vor::is_dumb()) {
        std::fflush(stdout);
        const auto on_size_limit = std::signal(SIGXFSZ, SIG_DFL); // for the pager
        std::FILE* const reader = popen(pager, "we");
        std::signal(SIGXFSZ, on_size_limit);
        if (reader != nullptr) {
            const auto on_pipe = std::signal(SIGPIPE, SIG_IGN);     // a pager may end before it has read everything
            const auto on_interrupt = std::signal(SIGINT, SIG_IGN); // Ctrl-C is the pager's
            vor::print(reader, text);
            const int status = pclose(reader);
            std::signal(SIGINT, on_interrupt);
            std::signal(SIGPIPE, on_pipe);
            shown = !WIFEXITED(status) || WEXITSTATUS(status) != not_found;
        }
    }
    if (!shown) {
        vor::print(stdout, text);
    }
}

} // namespace vorcfg::help
