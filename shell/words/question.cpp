#include "words/question.hpp"

#include <unistd.h>

#include <fmt/format.h>

#include "text/text.hpp"

namespace vorcfg {

bool is_interactive()
{
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

bool confirmed_by_user(const std::string& question)
{
    vor::print(stdout, fmt::format("{} [y/N] ", question));
    std::string answer;
    for (char byte; read(STDIN_FILENO, &byte, 1) == 1 && byte != '\n';) {
        answer += byte;
    }
    return answer == "y" || answer == "yes";
}

} // namespace vorcfg
