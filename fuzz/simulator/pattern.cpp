// A client's pattern and a line, beside what the C library finds.
#include <regex.h>

#include "input.hpp"
#include "konfd/pattern.hpp"

using namespace vorsim::konfd;
using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // What the C library repeats it copies: of more it would take all memory.
    constexpr std::size_t longest_compared = 20;
    Input input(data, size);
    const std::string expression = input.text();
    const std::string line = input.text();
    const auto pattern = Pattern::compile(expression);
    Work work(1 << 24);
    const bool found = pattern && pattern->matches(line, work);
    if (expression.size() > longest_compared || std::ranges::count(expression, '{') > 1 ||
        (expression + line).find('\0') != std::string::npos || work.exhausted() || !pattern) {
        return 0;
    }
    regex_t compiled;
    require(regcomp(&compiled, expression.c_str(), REG_EXTENDED | REG_NOSUB) == 0, "what is taken is an expression");
    const bool found_there = regexec(&compiled, line.c_str(), 0, nullptr, 0) == 0;
    regfree(&compiled);
    require(found == found_there, "it finds what the C library finds");
    return 0;
}
