#include "konfd/pattern.hpp"

#include <algorithm>
#include <cctype>
#include <vector>

namespace vorsim::konfd {
namespace {

// The system's compiler copies what is repeated, so that a short pattern such
// as ((a{99}){99}){99} or (((a+)+)+)+ takes all memory there is. The cost
// counts the copies before it sees the pattern.
constexpr std::size_t most_cost = 2000;
constexpr std::size_t deepest_group = 50;

struct Level {
    std::size_t before = 0; // what stands before the last atom
    std::size_t atom = 0;

    void put(std::size_t cost)
    {
        before += atom;
        atom = cost;
    }
    std::size_t total() const { return before + atom; }
};

// Behind the bracket expression that begins at `at`.
std::size_t bracket_end(const std::string& pattern, std::size_t at)
{
    at += at + 1 < pattern.size() && pattern[at + 1] == '^' ? 2 : 1;
    for (bool first = true; at < pattern.size() && (first || pattern[at] != ']'); first = false, ++at) {
        if (pattern[at] == '[' && (pattern[at + 1] == ':' || pattern[at + 1] == '.' || pattern[at + 1] == '=')) {
            const std::size_t end = pattern.find(std::string{pattern[at + 1], ']'}, at + 2);
            at = end == pattern.npos ? at : end + 1;
        }
    }
    return at + 1;
}

// The largest number between braces.
std::size_t repetitions(const std::string& pattern, std::size_t begin, std::size_t end)
{
    std::size_t largest = 0;
    std::size_t number = 0;
    for (std::size_t at = begin; at < end; ++at) {
        const bool digit = std::isdigit(static_cast<unsigned char>(pattern[at])) != 0;
        number = digit ? std::min(number * 10 + static_cast<std::size_t>(pattern[at] - '0'), most_cost) : 0;
        largest = std::max(largest, number);
    }
    return largest;
}

bool affordable(const std::string& pattern)
{
    std::vector<Level> levels(1);
    for (std::size_t at = 0; at < pattern.size();) {
        Level& level = levels.back();
        if (level.total() > most_cost) {
            return false;
        }
        std::size_t next = at + 1;
        switch (pattern[at]) {
        case '\\':
            if (next < pattern.size() && std::isdigit(static_cast<unsigned char>(pattern[next])) != 0) {
                return false; // a back reference
            }
            ++next;
            level.put(1);
            break;
        case '[':
            next = bracket_end(pattern, at);
            level.put(1);
            break;
        case '(':
            if (levels.size() > deepest_group) {
                return false;
            }
            levels.emplace_back();
            break;
        case ')':
            if (levels.size() > 1) {
                const std::size_t inside = level.total() + 1;
                levels.pop_back();
                levels.back().put(inside);
            }
            break;
        case '+':
            level.atom *= 2;
            break;
        case '{':
            next = std::min(pattern.find('}', at), pattern.size() - 1) + 1;
            level.atom *= 1 + repetitions(pattern, at, next);
            break;
        case '*':
        case '?':
            break;
        default:
            level.put(1);
        }
        at = next;
    }
    return levels.size() == 1 && levels.back().total() <= most_cost;
}

} // namespace

void Pattern::Free::operator()(regex_t* expression) const
{
    regfree(expression);
    delete expression;
}

std::optional<Pattern> Pattern::compile(const std::string& expression)
{
    if (!affordable(expression)) {
        return {};
    }
    auto compiled = std::make_unique<regex_t>();
    if (regcomp(compiled.get(), expression.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
        return {};
    }
    return Pattern(std::unique_ptr<regex_t, Free>(compiled.release()));
}

bool Pattern::matches(const std::string& line) const
{
    return regexec(expression_.get(), line.c_str(), 0, nullptr, 0) == 0;
}

} // namespace vorsim::konfd
