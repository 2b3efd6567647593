#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

#include "help/help.hpp"
#include "text/screen.hpp"
#include "text/text.hpp"

namespace vorcfg::help {

namespace {

bool may_page()
{
    return isatty(STDOUT_FILENO) == 1 && !vor::is_dumb();
}

// False where the program does not exist: the shell exits with 127.
bool was_shown_by(const char* program, std::string_view text)
{
    constexpr int not_found = 127;
    std::fflush(stdout);
    const auto on_size_limit = std::signal(SIGXFSZ, SIG_DFL); // for the program
    std::FILE* const reader = popen(program, "we");
    std::signal(SIGXFSZ, on_size_limit);
    if (reader == nullptr) {
        return false;
    }
    const auto on_pipe = std::signal(SIGPIPE, SIG_IGN);     // a pager may end before it has read everything
    const auto on_interrupt = std::signal(SIGINT, SIG_IGN); // Ctrl-C is the pager's
    vor::print(reader, text);
    const int status = pclose(reader);
    std::signal(SIGINT, on_interrupt);
    std::signal(SIGPIPE, on_pipe);
    return !WIFEXITED(status) || WEXITSTATUS(status) != not_found;
}

} // namespace

void show_in_pager(std::string_view text)
{
    const char* const given = std::getenv("PAGER");
    const char* const pager = given != nullptr && *given != '\0' ? given : "less -FRX 2>/dev/null";
    if (!may_page() || !was_shown_by(pager, text)) {
        vor::print(stdout, text);
    }
}

void show_page(const std::string& page)
{
    // not every man reads a page from a pipe
    constexpr auto formatter = "if man -l - </dev/null >/dev/null 2>&1; then exec man -l -; fi\n"
                               "command -v mandoc >/dev/null || exit 127; exec mandoc -a";
    if (isatty(STDOUT_FILENO) == 0) {
        vor::print(stdout, page);
    } else if (!may_page() || !was_shown_by(formatter, page)) {
        show_in_pager(text_of_page(page));
    }
}

} // namespace vorcfg::help
